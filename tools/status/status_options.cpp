#include "tools/status/status_options.h"

#include "base/text.h"
#include "tools/events/filter_options.h"
#include "tools/file_path.h"
#include "tools/given_time.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>

namespace ruvo {

namespace {

constexpr std::int64_t kUsualPeriod = std::int64_t{24} * 3600;

/// Reports an option that is not a number and returns false.
bool ParseNumber(const CArguments& arguments, std::string_view name, std::uint64_t& number,
                 SConsole& console) {
    if (!arguments.Has(name)) {
        return true;
    }
    const std::string text = arguments.Get(name);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isGood = error == std::errc() && end == text.data() + text.size();
    if (!isGood) {
        console.error.Write(std::string(name) + ": " + EscapeControls(SystemTextToUtf8(text)) +
                            ": expected a number (0 for never)\n");
    }
    return isGood;
}

bool ParseSinceOption(const CArguments& arguments, std::string& since, SConsole& console) {
    since = LocalTimeText(NowSeconds() - kUsualPeriod);
    return ParseTimeOption(arguments, "--since", since, console);
}

/// One name per line; "#" starts a comment.
bool ReadExpectedRelays(const CArguments& arguments, std::vector<std::string>& relays, SConsole& console) {
    const std::string path = arguments.Get("--expect");
    if (path.empty()) {
        return true;
    }
    std::ifstream file{FilePath(path), std::ios::binary};
    for (std::string line; std::getline(file, line);) {
        line.resize(std::min(line.size(), line.find('#')));
        if (const std::string_view relay = Trim(line, kWhiteSpace); !relay.empty()) {
            relays.push_back(SystemTextToUtf8(relay));
        }
    }
    if (!file.eof()) {
        console.error.Write("--expect: " + EscapeControls(SystemTextToUtf8(path)) +
                            ": cannot read the file\n");
    }
    return file.eof();
}

/// An age in seconds; "0" is never.
bool ParseAgeOption(const CArguments& arguments, std::string_view name, std::int64_t& seconds,
                    SConsole& console) {
    if (!arguments.Has(name)) {
        return true;
    }
    const std::string text = arguments.Get(name);
    const auto age = text == "0" ? std::optional<std::int64_t>(0) : ParseLength(text);
    seconds = age.value_or(0);
    if (!age) {
        console.error.Write(std::string(name) + ": " + EscapeControls(SystemTextToUtf8(text)) +
                            ": expected a length such as 36h or 2d (0 for never)\n");
    }
    return age.has_value();
}

bool ParseThresholds(const CArguments& arguments, SThresholds& thresholds, SConsole& console) {
    return ParseNumber(arguments, "--warn-silent", thresholds.warnSilent, console) &&
           ParseNumber(arguments, "--critical-silent", thresholds.criticalSilent, console) &&
           ParseNumber(arguments, "--warn-problems", thresholds.warnProblems, console) &&
           ParseNumber(arguments, "--critical-problems", thresholds.criticalProblems, console) &&
           ParseAgeOption(arguments, "--max-visit-age", thresholds.criticalVisitAge, console) &&
           ParseAgeOption(arguments, "--warn-visit-age", thresholds.warnVisitAge, console);
}

} // namespace

bool ParseStatusOptions(const CArguments& arguments, SStatusOptions& options, SConsole& console) {
    options.choice = {SystemTextToUtf8(arguments.Get("--relay")), SystemTextToUtf8(arguments.Get("--match"))};
    return ParseThresholds(arguments, options.thresholds, console) &&
           ParseSinceOption(arguments, options.since, console) &&
           ReadExpectedRelays(arguments, options.expected, console);
}

} // namespace ruvo
