// ruvoctl status: the state of a site, for people and monitoring systems.
#include "base/text.h"
#include "platform/clock.h"
#include "tools/command.h"
#include "tools/status/status_output.h"
#include "tools/text_encoding.h"
#include "tools/whole_file.h"

#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>

namespace ruvo {

namespace {

constexpr int kExitUnknown = static_cast<int>(EState::Unknown);
/// Monitoring systems show standard output only.
constexpr std::string_view kUsageVerdict = "UNKNOWN: usage error in ruvoctl status; see standard error\n";

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "EVENTROOT", "the folder that contains the day files, at any depth"},
    SOption{EOptionKind::Positional, "LOG", "the error log"},
    SOption{EOptionKind::Choice, "--format", "text (default) or json", "text|json", "text"},
    SOption{
        EOptionKind::Text, "--since",
        "count problems of this period, such as 36h or 7d, or since this local date or time (default: 24h)",
        "TIME"},
    SOption{EOptionKind::Text, "--warn-silent",
            "warning if a relay has had no new day file for more than DAYS days (default: 14; 0: never)",
            "DAYS"},
    SOption{EOptionKind::Text, "--critical-silent",
            "critical if a relay has had no new day file for more than DAYS days (default: 60; 0: never)",
            "DAYS"},
    SOption{EOptionKind::Text, "--warn-problems",
            "warning if the error log has at least NUMBER problems (default: 1; 0: never)", "NUMBER"},
    SOption{EOptionKind::Text, "--critical-problems",
            "critical if the error log has at least NUMBER problems (default: 0; 0: never)", "NUMBER"},
    SOption{EOptionKind::Text, "--expect",
            "file with the names of the relays that must be present, one per line, as in day file names",
            "FILE"},
    SOption{EOptionKind::Text, "--prometheus", "also write the figures as Prometheus metrics to this file",
            "FILE"},
    SOption{EOptionKind::Text, "--site", "site name in the metrics (default: the name of the event root)",
            "NAME"},
};

constexpr std::string_view kNotes =
    R"(A relay's last day is the UTC date of its newest day file, that is, of the last run that found events.
Times in the error log are local; event times are the relay's own. Damage causes a warning if the
date of its day file is within --since; older damage is only counted.
Exit status, as monitoring systems expect: 0 good, 1 warning, 2 critical, 3 unknown (usage error, or
something could not be read or written). The status describes the files that exist: GOOD does not prove
that last night's run took place. Monitor the timer or scheduled task as well.

Example: after each night's run
  ruvoctl status events/ RUVO_Errors.log --warn-silent 7 --prometheus /var/lib/prometheus/node-exporter/ruvo.prom)";

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

bool ParseThresholds(const CArguments& arguments, SThresholds& thresholds, SConsole& console) {
    return ParseNumber(arguments, "--warn-silent", thresholds.warnSilent, console) &&
           ParseNumber(arguments, "--critical-silent", thresholds.criticalSilent, console) &&
           ParseNumber(arguments, "--warn-problems", thresholds.warnProblems, console) &&
           ParseNumber(arguments, "--critical-problems", thresholds.criticalProblems, console);
}

bool ParseSinceOption(const CArguments& arguments, std::string& since, SConsole& console) {
    const std::string text = arguments.Has("--since") ? arguments.Get("--since") : "24h";
    since = ParseSince(text);
    if (since.empty()) {
        console.error.Write(
            "--since: " + EscapeControls(SystemTextToUtf8(text)) +
            ": expected a duration such as 36h or 7d, a date such as 2026-11-16 or a time such as "
            "2026-11-16T03:12:45\n");
    }
    return !since.empty();
}

/// One name per line; "#" starts a comment.
bool ReadExpectedRelays(const CArguments& arguments, std::vector<std::string>& relays, SConsole& console) {
    const std::string path = arguments.Get("--expect");
    if (path.empty()) {
        return true;
    }
    std::ifstream file{std::filesystem::path(path), std::ios::binary};
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

std::string SiteName(const CArguments& arguments) {
    if (arguments.Has("--site")) {
        return SystemTextToUtf8(arguments.Get("--site"));
    }
    std::error_code ignored;
    std::filesystem::path root = std::filesystem::weakly_canonical(arguments.Get("EVENTROOT"), ignored);
    root = root.has_filename() ? root : root.parent_path();
    return SystemTextToUtf8(root.filename().string());
}

/// A readable reason on failure; empty on success.
std::string WriteMetrics(const CArguments& arguments, const SSiteStatus& status, const SVerdict& verdict) {
    const std::string path = arguments.Get("--prometheus");
    if (path.empty()) {
        return {};
    }
    const std::string failure =
        ReplaceWholeFile(path, StatusAsMetrics(status, verdict, SiteName(arguments), UnixSeconds()));
    return failure.empty() ? failure : SystemTextToUtf8(path + ": " + failure);
}

int RunStatus(const CArguments& arguments, SConsole& console) {
    SThresholds thresholds;
    SSiteQuestion question{.eventRoot = arguments.Get("EVENTROOT"),
                           .logPath = arguments.Get("LOG"),
                           .since = {},
                           .expected = {}};
    if (!ParseThresholds(arguments, thresholds, console) ||
        !ParseSinceOption(arguments, question.since, console) ||
        !ReadExpectedRelays(arguments, question.expected, console)) {
        console.out.Write(kUsageVerdict);
        return kExitUnknown;
    }
    SSiteStatus status = ReadSiteStatus(question, console);
    SVerdict verdict = Evaluate(status, thresholds);
    // First, because a failure here is part of the verdict.
    if (const std::string failure = WriteMetrics(arguments, status, verdict); !failure.empty()) {
        console.error.Write("ruvoctl: " + EscapeControls(failure) + "\n");
        status.failures.push_back(failure);
        verdict = Evaluate(status, thresholds);
    }
    console.out.Write(arguments.Get("--format") == "json" ? StatusAsJson(status, verdict)
                                                          : StatusAsText(status, verdict));
    return static_cast<int>(verdict.state);
}

} // namespace

SCommand StatusCommand() {
    return {.name = "status",
            .summary = "Report the state of a site",
            .notes = kNotes,
            .options = kOptions,
            .run = RunStatus,
            .secretNotice = {},
            .usageStatus = kExitUnknown,
            .usageVerdict = kUsageVerdict,
            .failureStatus = kExitUnknown};
}

} // namespace ruvo
