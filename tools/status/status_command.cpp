// ruvoctl status: the state of a site, for people and monitoring systems.
#include "base/text.h"
#include "ledger/visit_record.h"
#include "paths/path_utilities.h"
#include "platform/clock.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "tools/command.h"
#include "tools/ini/site_environment.h"
#include "tools/ini/site_places.h"
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
    SOption{EOptionKind::Positional, "SITE",
            "INI file of the site; or, with LOG, the folder that contains the day files, at any depth"},
    SOption{EOptionKind::Optional, "LOG", "the error log, if SITE is a folder"},
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
    SOption{
        EOptionKind::Text, "--max-visit-age",
        "critical if the last visit began longer ago than AGE, such as 36h or 2d (default: 36h; 0: never)",
        "AGE"},
    SOption{EOptionKind::Text, "--warn-visit-age",
            "warning if the last visit began longer ago than AGE (default: 0: never)", "AGE"},
    SOption{EOptionKind::Text, "--expect",
            "file with the names of the relays that must be present, one per line, as in day file names",
            "FILE"},
    SOption{EOptionKind::Text, "--prometheus", "also write the figures as Prometheus metrics to this file",
            "FILE"},
    SOption{EOptionKind::Text, "--site",
            "site name in the metrics (default: the name of the INI file or of the event root)", "NAME"},
};

constexpr std::string_view kNotes =
    R"(With an INI file, the status also covers the visits: when the last one took place, how it ended, and
which relays it reached. Event root, log and state folder are those of a visit; SITE.env next to SITE.ini
counts. The records of visits are readable only to the user of the visits and to root. With two paths, the
status describes the files alone: GOOD does not prove that last night's visit took place.
A relay's last day is the UTC date of its newest day file, that is, of the last run that found events.
Times in the error log are local; event times are the relay's own. Damage causes a warning if the
date of its day file is within --since; older damage is only counted.
Exit status, as monitoring systems expect: 0 good, 1 warning, 2 critical, 3 unknown (usage error, or
something could not be read or written, or no visit is recorded).

Examples: a site of this machine, and files that were copied from another one
  ruvoctl status /etc/ruvo/north.ini --max-visit-age 26h
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

/// An age in seconds; "0" is never.
bool ParseAgeOption(const CArguments& arguments, std::string_view name, std::int64_t& seconds,
                    SConsole& console) {
    if (!arguments.Has(name)) {
        return true;
    }
    const std::string text = arguments.Get(name);
    const auto age = text == "0" ? std::optional<std::int64_t>(0) : ParseAge(text);
    seconds = age.value_or(0);
    if (!age) {
        console.error.Write(std::string(name) + ": " + EscapeControls(SystemTextToUtf8(text)) +
                            ": expected a duration such as 36h or 2d (0 for never)\n");
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

/// What is to be looked at: a site by its INI file, or two paths.
struct SWhere {
    std::string ini; ///< full path; empty for two paths
    std::string place;
    std::string log;
};

bool FindWhere(const CArguments& arguments, SWhere& where, SConsole& console) {
    where.place = arguments.Get("SITE");
    where.log = arguments.Get("LOG");
    const bool isIni = EqualIniNames(SplitPath(where.place).extension, ".ini");
    where.ini = where.log.empty() ? FullPath(where.place) : std::string();
    const bool hasAge = arguments.Has("--max-visit-age") || arguments.Has("--warn-visit-age");
    if (where.log.empty() ? isIni && !where.ini.empty() : !hasAge) {
        return true;
    }
    console.error.Write(
        where.log.empty()
            ? "expected an INI file, or the folder of the day files and the error log\n"
            : "--max-visit-age, --warn-visit-age: expected an INI file in place of the two paths\n");
    return false;
}

std::string SiteName(const CArguments& arguments, const SWhere& where) {
    if (arguments.Has("--site")) {
        return SystemTextToUtf8(arguments.Get("--site"));
    }
    if (!where.ini.empty()) {
        return SystemTextToUtf8(SplitPath(where.ini).name);
    }
    std::error_code ignored;
    std::filesystem::path root = std::filesystem::weakly_canonical(where.place, ignored);
    root = root.has_filename() ? root : root.parent_path();
    return SystemTextToUtf8(root.filename().string());
}

/// A readable reason on failure; empty on success.
std::string WriteMetrics(const std::string& path, const std::string& site, const SSiteStatus& status,
                         const SVerdict& verdict) {
    if (path.empty()) {
        return {};
    }
    const std::string failure = ReplaceWholeFile(path, StatusAsMetrics(status, verdict, site, UnixSeconds()));
    return failure.empty() ? failure : SystemTextToUtf8(path + ": " + failure);
}

/// Of the site of an INI file, in the environment of its visits.
SSiteStatus ReadSite(const std::string& ini, SSiteQuestion question, SConsole& console) {
    ApplySiteEnvironment(ini);
    const auto places = ReadSitePlaces(ini);
    if (!places) {
        SSiteStatus unknown;
        unknown.since = question.since;
        unknown.failures = {SystemTextToUtf8(DisplayPath(ini)) +
                            ": the file cannot be read, or names a path that cannot be resolved"};
        return unknown;
    }
    question.eventRoot = SystemPath(places->events);
    question.logPath = SystemPath(places->log);
    SSiteVisits visits = ReadSiteVisits(ini, *places, SecondsOfRecord(RecordedNow()).value_or(0));
    question.mayHaveNoRoot = visits.IsVisited() && !visits.summary.hasEvents;
    SSiteStatus status = ReadSiteStatus(question, console);
    status.visits = std::move(visits);
    return status;
}

int RunStatus(const CArguments& arguments, SConsole& console) {
    SThresholds thresholds;
    SSiteQuestion question;
    SWhere where;
    if (!ParseThresholds(arguments, thresholds, console) || !FindWhere(arguments, where, console) ||
        !ParseSinceOption(arguments, question.since, console) ||
        !ReadExpectedRelays(arguments, question.expected, console)) {
        console.out.Write(kUsageVerdict);
        return kExitUnknown;
    }
    question.eventRoot = where.place;
    question.logPath = where.log;
    SSiteStatus status =
        where.ini.empty() ? ReadSiteStatus(question, console) : ReadSite(where.ini, question, console);
    SVerdict verdict = Evaluate(status, thresholds);
    // First, because a failure here is part of the verdict.
    if (const std::string failure =
            WriteMetrics(arguments.Get("--prometheus"), SiteName(arguments, where), status, verdict);
        !failure.empty()) {
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
