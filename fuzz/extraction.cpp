// A whole run over one or two relays, against a server that the input plays. Input: a byte of options (bits 0
// and 1: link type, bit 2: a second relay, bit 3: a password, bit 4: today's file is there and torn), and the
// server's bytes.
#include "fuzz/support/byte_server.h"
#include "fuzz/support/memory_system.h"
#include "fuzz/support/require.h"
#include "fuzz/support/text_checks.h"

#include "dayfile/day_file_reader.h"
#include "extraction/password_state.h"
#include "link/client.h"
#include "log/connection_details.h"
#include "log/error_log.h"
#include "run/extraction_run.h"
#include "run/link_control.h"
#include "run/run_end.h"

#include <algorithm>

namespace ruvo::fuzz {

using namespace std::string_literals;

namespace {

const std::string kRoot = R"(C:\ev)";
const std::string kLog = R"(C:\log\run.log)";
const std::string kUsualFile = R"(C:\ev\FD31-001234\FD31-001234-2026-11-16-DEV.evt)";
const std::string kPassword = "q#Z7kX!w";
const std::string kEarlier = "APP: Parlane\r\nTYPE: EventList\r\n\x1A\x00torn"s; // as a crash leaves it

struct SOptions {
    unsigned bits;
    [[nodiscard]] bool IsEthernet() const { return bits % 4 == 1; }
    [[nodiscard]] bool IsModem() const { return bits % 4 == 2; }
    [[nodiscard]] bool HasSecondRelay() const { return (bits & 4U) != 0; }
    [[nodiscard]] bool HasPassword() const { return (bits & 8U) != 0; }
    [[nodiscard]] bool HasEarlierFile() const { return (bits & 16U) != 0; }
};

CRuvoConfig MakeConfig(SOptions options) {
    SRuvoConfigFields fields;
    fields.errorLogPath = kLog;
    fields.errorLogPathGiven = true;
    fields.eventRoot = kRoot;
    fields.commPort = "COM1";
    fields.baudRate = 9600;
    fields.useEthernet = options.IsEthernet() ? 1 : 0;
    fields.useModem = options.IsModem() ? 1 : 0;
    for (const std::string key : {"RV001", "RV002"}) {
        fields.serialEntries[key] = 5;
        fields.modemEntries[key] = 6;
        fields.ethernetEntries[key] = "10.0.0.5,7,1";
        if (options.HasPassword()) {
            fields.passwords[key] = kPassword;
        }
        if (!options.HasSecondRelay()) {
            break;
        }
    }
    return CRuvoConfig(std::move(fields));
}

void PrepareSystem(SOptions options) {
    SMemorySystem& system = MemorySystem();
    system = {};
    system.AddFolder(kRoot);
    system.AddFolder(R"(C:\log)");
    if (options.HasEarlierFile()) {
        system.AddFolder(kUsualFile.substr(0, kUsualFile.rfind('\\')));
        system.AddFile(kUsualFile, {kEarlier.begin(), kEarlier.end()});
    }
    ResetErrorLog();
    ResetConnectionDetails();
    PasswordState() = {};
}

/// A path that is the event root, or below it by its text alone.
bool IsInRoot(const std::string& path) {
    const std::string below = path + "\\";
    return below.starts_with(kRoot + "\\") && path.find('/') == std::string::npos &&
           below.find("\\..\\") == std::string::npos && below.find("\\.\\") == std::string::npos &&
           path.find(':', 2) == std::string::npos && HasNoControls(path) && IsUtf8Text(path);
}

void CheckPlaces() {
    for (const std::string& path : MemorySystem().touched) {
        Require(path == kLog || IsInRoot(path), "every path opened lies under the event root");
    }
}

bool Contains(const FileBytes& bytes, const std::string& text) {
    return std::search(bytes.begin(), bytes.end(), text.begin(), text.end()) != bytes.end();
}

/// Lines of a time stamp, a blank and a text, each ended by CR LF.
void CheckLog(const FileBytes& bytes) {
    const std::string log(bytes.begin(), bytes.end());
    constexpr std::size_t kStamp = 19;
    Require(IsUtf8Text(log) && HasNoControls(log), "the log is readable");
    for (std::size_t at = 0; at < log.size();) {
        const std::size_t end = log.find_first_of("\r\n", at);
        Require(log.substr(end, 2) == "\r\n" && end > at + kStamp && log[at + kStamp] == ' ',
                "a problem is one line");
        at = end + 2;
    }
}

/// A file that the run made is sound from its first byte to its last.
void CheckDayFile(const std::string& path) {
    static CDayFileReader reader;
    Require(reader.Open(path).Good(), "a day file opens");
    SDayFileItem item;
    std::size_t records = 0;
    while (reader.Next(item)) {
        Require(!item.damage, "a written file has no damage");
        ++records;
    }
    Require(records > 0, "a file is made for a record");
}

void CheckFiles() {
    std::vector<std::string> dayFiles;
    for (const auto& [path, bytes] : MemorySystem().files) {
        Require(!Contains(*bytes, kPassword), "no password is written");
        if (path == kLog) {
            CheckLog(*bytes);
        } else if (bytes->size() >= kEarlier.size() &&
                   std::equal(
                       kEarlier.begin(), kEarlier.end(), bytes->begin(),
                       [](char c, std::uint8_t byte) { return static_cast<std::uint8_t>(c) == byte; })) {
            Require(path == kUsualFile, "a header comes first");
        } else {
            Require(IsInRoot(path) && path.ends_with(".evt"), "nothing but day files is left");
            dayFiles.push_back(path);
        }
    }
    for (const std::string& path : dayFiles) {
        CheckDayFile(path);
    }
}

void CheckEnd(const CByteServer& server, const CRunContext& context, std::size_t inputSize) {
    constexpr std::size_t kCallsWithoutBytes = 400; // two relays that do not answer
    Require(server.CallCount() <= inputSize + kCallsWithoutBytes, "a run ends");
    Require(!context.IsLinkOpen() && !context.IsModemConnected(), "the link is closed");
    Require(server.OpenPorts() <= 0 || server.WasAbortRequested(), "a port that was opened is closed");
}

void Check(std::span<const std::uint8_t> bytes) {
    CInput input(bytes);
    const SOptions options{input.TakeByte()};
    PrepareSystem(options);
    CByteServer server(input);
    Require(CP32Wrap::CreateInstance() == kLinkGood, "the server starts");
    CRunContext context;
    context.Config() = MakeConfig(options);
    context.SetDestinationRoot(kRoot);
    ResolveErrorLogPath(context, true);
    CRunEnd end;
    RunExtraction(context, end);
    CloseLink(context);
    CP32Wrap::DestroyInstance();
    CheckPlaces();
    CheckFiles();
    if (options.HasEarlierFile()) {
        const FileBytes* const earlier = MemorySystem().Find(kUsualFile);
        Require(earlier != nullptr && Contains(*earlier, kEarlier), "earlier bytes stay");
    }
    CheckEnd(server, context, bytes.size());
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check({data, size});
    return 0;
}
