// An error log read back. Input: the file's bytes.
#include "fuzz/support/memory_system.h"
#include "fuzz/support/require.h"
#include "fuzz/support/text_checks.h"

#include "tools/log_lines.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <sstream>

namespace ruvo::fuzz {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

constexpr std::string_view kDetails = " Connection details - ";
constexpr std::string_view kStatus = " P32LS status: ";

/// The line put together again from its parts is what it was. Only a mark with nothing after it is lost.
/// Details that do not stand in the line were taken from a message about a relay's own link.
bool HoldsAll(const SLogLine& line, const std::string& text) {
    std::string whole = line.time.empty() ? std::string() : line.time + ' ';
    std::ranges::replace(whole, '-', '/');
    std::ranges::replace(whole, 'T', ' ');
    whole += line.message;
    const std::string details = std::string(kDetails) + line.connection;
    whole += text.find(details) != std::string::npos && !line.connection.empty() ? details : "";
    whole += line.status.empty() ? "" : std::string(kStatus) + line.status;
    const bool hasEmptyPart = text.ends_with(kDetails) || text.ends_with(kStatus) ||
                              text.find(std::string(kDetails) + std::string(kStatus)) != std::string::npos;
    return whole == text || hasEmptyPart;
}

void Check(std::span<const std::uint8_t> bytes) {
    MemorySystem().touched.clear();
    MemorySystem().AddFile("C:\\run.log", {bytes.begin(), bytes.end()});
    static CLogReader reader; // its buffer is large, and every file starts it over
    Require(reader.Open("C:\\run.log").Good(), "the file opens");
    std::string all(bytes.begin(), bytes.end());
    all.erase(0, all.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    std::istringstream stream(all);
    std::uint64_t number = 0;
    SLogLine line;
    for (std::string text; std::getline(stream, text);) {
        ++number;
        text.resize(text.size() - (text.ends_with('\r') ? 1 : 0));
        if (text.empty()) {
            continue;
        }
        Require(reader.Next(line) && line.number == number, "every line comes, with its number");
        Require(HoldsAll(line, SystemTextToUtf8(text)), "a line's parts are all of it");
        for (const std::string* part : {&line.time, &line.message, &line.connection, &line.status}) {
            Require(IsUtf8Text(*part), "every part is UTF-8");
        }
        Require(IsUtf8Text(ShortConnectionName(line.connection)), "a short name is UTF-8");
    }
    Require(!reader.Next(line) && reader.Result().Good(), "nothing comes behind the last line");
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check({data, size});
    return 0;
}
