// An INI file to its result code, and what the companion program says about it. Input: the file's bytes.
#include "config/result_messages.h"
#include "fuzz/support/memory_system.h"
#include "fuzz/support/require.h"
#include "fuzz/support/text_checks.h"

#include "app/load_and_check.h"
#include "config/configuration.h"
#include "config/ethernet_entry.h"
#include "config/scramble.h"
#include "config/validation.h"
#include "log/error_log.h"
#include "platform/ini_text.h"
#include "platform/profile.h"
#include "platform/text_file.h"
#include "tools/ini/diagnostics.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <span>

namespace ruvo::fuzz {

namespace {

const std::string kIniPath = R"(C:\site\site.ini)";

bool AreRelayAddresses(const AddressEntries& entries) {
    return !entries.empty() &&
           std::ranges::all_of(entries, [](const auto& entry) { return IsRelayAddress(entry.second); });
}

bool AreEthernetEntries(const TextEntries& entries) {
    return !entries.empty() && std::ranges::all_of(entries, [](const auto& entry) {
        return IsValidIpAddress(ParseEthernetIp(entry.second)) &&
               ParseEthernetDeviceAddress(entry.second) != kInvalidAddress &&
               ParseEthernetBusAddress(entry.second) != kInvalidAddress;
    });
}

/// What a run may rely on once the check has passed.
void CheckPassed(const CRuvoConfig& config) {
    for (const std::int32_t value :
         {config.BusyHoldoff(), config.BusyCount(), config.ResetResponse(), config.Response(),
          config.TryCount(), config.TransmitDelay(), config.GlobalTransmit()}) {
        Require(value >= 0 && value <= 65535, "a transaction value has 16 bits");
    }
    Require(!config.EventRoot().empty() && !config.ErrorLogPath().empty(), "files have a place");
    if (config.UseEthernet() == 1) {
        Require(AreEthernetEntries(config.EthernetEntries()), "Ethernet entries are good");
        return;
    }
    Require(config.UseEthernet() == 0 && (config.UseModem() == 0 || config.UseModem() == 1),
            "one link type is chosen");
    Require(config.BaudRate() >= 1200 && config.BaudRate() <= 115200, "the baud rate is one that exists");
    const bool modem = config.UseModem() == 1;
    Require(AreRelayAddresses(modem ? config.ModemEntries() : config.SerialEntries()),
            "relay addresses are good");
    Require(!modem || !config.TapiModemName().empty(), "a modem has a name");
}

void CheckPasswords(const TextEntries& passwords) {
    for (const auto& [key, password] : passwords) {
        Require(key.size() == 5 && key.starts_with("RV") && password.size() <= kMaxPasswordLength,
                "a password belongs to a relay's key and has 8 characters at most");
    }
}

/// A name that ends at a NUL may end in a blank, and then it cannot be asked for.
bool CanBeAskedFor(std::string_view name) {
    return name.empty() || std::string_view(" \t\v\f\x1A").find(name.back()) == std::string_view::npos;
}

/// The reader answers what the first occurrence in the text says, up to its capacity.
void CheckReader(const CIniText& ini) {
    constexpr std::size_t kMostAsked = 24;
    constexpr std::size_t kCapacity = 16;
    const CProfileReader reader(kIniPath);
    std::size_t asked = 0;
    for (const SIniSection& section : ini.Sections()) {
        for (const SIniEntry& entry : section.entries) {
            if (section.line == 0 || ++asked > kMostAsked) {
                return;
            }
            if (!CanBeAskedFor(section.name) || !CanBeAskedFor(entry.key)) {
                continue;
            }
            const SIniEntry* const first = ini.FindEntry(section.name, entry.key);
            const auto all = ini.FindAll(section.name, entry.key);
            Require(std::ranges::find(all, &entry) != all.end(), "every occurrence is found");
            const std::string value = reader.ReadString(section.name, entry.key, "none", kCapacity);
            Require(value.size() < kCapacity, "a capacity is not exceeded");
            Require(first == nullptr || !first->value || value == first->value->substr(0, kCapacity - 1),
                    "the first occurrence is read");
        }
    }
}

void CheckDiagnostics(const std::vector<SDiagnostic>& diagnostics, std::size_t lineCount) {
    for (const SDiagnostic& diagnostic : diagnostics) {
        Require(diagnostic.line <= lineCount && !diagnostic.text.empty(),
                "a diagnostic names a line of the file");
        const std::string shown = EscapeControls(SystemTextToUtf8(diagnostic.text));
        Require(IsUtf8Text(shown) && HasNoControls(shown), "a diagnostic can be shown");
    }
}

void CheckTool(EResultCode code) {
    std::string text;
    Require(ReadTextFile(kIniPath, text) || code == EResultCode::IniFileNotOpened, "a file is read");
    const CIniText ini = CIniText::Parse(text);
    const std::size_t lines =
        1 +
        static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return c == '\n' || c == '\r'; }));
    const std::vector<SDiagnostic> causes = ExplainResultCode(code, ini);
    Require((code == EResultCode::Success) == causes.empty(), "what is refused has a cause");
    CheckDiagnostics(causes, lines);
    CheckDiagnostics(FindWarnings(ini), lines);
    CheckReader(ini);
}

void Check(std::span<const std::uint8_t> bytes) {
    SMemorySystem& system = MemorySystem();
    system = {};
    system.AddFolder(R"(C:\site)");
    system.currentFolder = R"(C:\site)";
    system.AddFile(kIniPath, {bytes.begin(), bytes.end()});
    const auto files = system.files;
    const auto folders = system.folders;
    ResetErrorLog();
    CRunContext context;
    const EResultCode code = LoadAndCheck(context, kIniPath, true);
    Require(!ResultMessage(code).empty(), "every result has a message");
    Require(system.files == files && system.folders == folders &&
                *system.Find(kIniPath) == *files.begin()->second,
            "proving that files can be written leaves nothing behind");
    CheckPasswords(context.Config().Passwords());
    if (code == EResultCode::Success) {
        CheckPassed(context.Config());
    }
    CheckTool(code);
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check({data, size});
    return 0;
}
