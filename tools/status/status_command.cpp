// ruvoctl status: the state of a site, for people and monitoring systems.
#include "paths/path_utilities.h"
#include "platform/clock.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "tools/file_path.h"
#include "tools/status/site_report.h"
#include "tools/status/status_options.h"
#include "tools/status/status_output.h"
#include "tools/text_encoding.h"
#include "tools/typed_path.h"
#include "tools/whole_file.h"

#include <array>
#include <filesystem>

namespace ruvo {

namespace {

constexpr int kExitUnknown = static_cast<int>(EState::Unknown);
/// Monitoring systems show standard output only.
constexpr std::string_view kUsageVerdict = "UNKNOWN: usage error in ruvoctl status; see standard error\n";

constexpr std::array kOptions{
    SOption{
        EOptionKind::Optional, "SITE",
        "INI file of the site; with LOG, the folder that contains the day files, at any depth; with --all, "
        "the folder of the INI files"},
    SOption{EOptionKind::Optional, "LOG", "the error log, if SITE is a folder"},
    SOption{EOptionKind::Flag, "--all",
            "report all sites of a folder, one line each (default folder: /etc/ruvo, on Windows "
            "%ProgramData%\\ruvo)"},
    SOption{EOptionKind::Choice, "--format", "text (default) or json", "text|json", "text"},
    SOption{EOptionKind::Text, "--since",
            "count problems since this local time: 36h, 7d, yesterday, a date or a time (default: 24h)",
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
    SOption{
        EOptionKind::Text, "--relay",
        "only relays whose name, key, address, plant reference, description or model contains this text, such "
        "as \"Feeder 7\"; case does not matter"},
    SOption{
        EOptionKind::Text, "--match",
        "only problems with this text in their line, or in what their relay is called; case does not matter"},
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
With --relay, the status is that of these relays and of the visits as a whole; with --all, only of sites whose
INI file has such a relay. If no relay matches, the status is unknown, and says which relays there are. With two
paths, --relay leaves the whole error log: only an INI file tells which relay a line means.
Of an error log that several INI files of a folder name, only lines of the site's own runs count, as far as
the records of visits show.
With --all, every INI file of the folder but registry.ini is a site. The worst site comes first, and the
exit status is that of the worst site: critical, then unknown, then warning. An INI file that cannot be read
is unknown.
A relay's last day is the UTC date of its newest day file, that is, of the last run that found events.
Times of visits and of the error log are local; event times are the relay's own. Damage causes a warning if the
date of its day file is within --since; older damage is only counted.
Exit status, as monitoring systems expect: 0 good, 1 warning, 2 critical, 3 unknown (usage error, or
something could not be read or written, or no visit is recorded).

Examples: a site of this machine, all sites, and files that were copied from another machine
  ruvoctl status /etc/ruvo/north.ini --max-visit-age 26h
  ruvoctl status --all
  ruvoctl status events/ RUVO_Errors.log --warn-silent 7 --prometheus /var/lib/prometheus/node-exporter/ruvo.prom)";

/// What is to be looked at: a site by its INI file, or two paths.
struct SWhere {
    std::string ini; ///< full path; empty for two paths
    std::string place;
    std::string log;
};

/// Returns the mistake; empty without one.
std::string_view FindWhere(const CArguments& arguments, SWhere& where) {
    where.place = arguments.Get("SITE");
    where.log = arguments.Get("LOG");
    if (arguments.Has("--prometheus") && (arguments.Has("--relay") || arguments.Has("--match"))) {
        return "--prometheus: expected all relays and problems, without --relay and --match\n";
    }
    if (arguments.Has("--all")) {
        return !where.log.empty() || arguments.Has("--site") || arguments.Has("--expect")
                   ? "--all: expected only a folder of INI files, without LOG, --site and --expect\n"
                   : "";
    }
    const bool isIni = EqualIniNames(SplitPath(where.place).extension, ".ini");
    where.ini = where.log.empty() ? TypedPath(where.place) : std::string();
    if (where.log.empty()) {
        return isIni && !where.ini.empty()
                   ? ""
                   : "expected an INI file, or the folder of the day files and the error log, or --all\n";
    }
    return arguments.Has("--max-visit-age") || arguments.Has("--warn-visit-age")
               ? "--max-visit-age, --warn-visit-age: expected an INI file in place of the two paths\n"
               : "";
}

std::string NameOfRoot(const std::string& place) {
    std::error_code ignored;
    std::filesystem::path root = std::filesystem::weakly_canonical(FilePath(OwnSpelling(place)), ignored);
    root = root.has_filename() ? root : root.parent_path();
    return SystemTextToUtf8(root.filename().string());
}

/// A readable reason on failure; empty on success.
std::string WriteMetrics(const std::string& path, std::span<const SSiteReport> sites) {
    if (path.empty()) {
        return {};
    }
    const std::string failure = ReplaceWholeFile(path, StatusAsMetrics(sites, UnixSeconds()));
    return failure.empty() ? failure : SystemTextToUtf8(path + ": " + failure);
}

int RunOfAll(const CArguments& arguments, const SWhere& where, const SStatusOptions& options,
             SConsole& console) {
    SAllSites all = ReadAllSites(where.place, options, console);
    if (const std::string failure = WriteMetrics(arguments.Get("--prometheus"), all.sites);
        !failure.empty()) {
        console.error.Write("ruvoctl: " + EscapeControls(failure) + "\n");
        all.failures.push_back(failure);
    }
    console.out.Write(arguments.Get("--format") == "json" ? SitesAsJson(all) : SitesAsText(all));
    return static_cast<int>(all.State());
}

int RunOfOne(const CArguments& arguments, const SWhere& where, const SStatusOptions& options,
             SConsole& console) {
    SSiteReport site;
    if (where.ini.empty()) {
        site.name = NameOfRoot(where.place);
        site.status = ReadSiteStatus({.eventRoot = where.place,
                                      .logPath = where.log,
                                      .since = options.since,
                                      .expected = options.expected,
                                      .choice = options.choice},
                                     console);
        site.verdict = Evaluate(site.status, options.thresholds);
    } else {
        SSharedBySites shared;
        site = ReadSiteReport(where.ini, options, shared, console);
    }
    site.name = arguments.Has("--site") ? SystemTextToUtf8(arguments.Get("--site")) : site.name;
    // First, because a failure here is part of the verdict.
    if (const std::string failure = WriteMetrics(arguments.Get("--prometheus"), std::span(&site, 1));
        !failure.empty()) {
        console.error.Write("ruvoctl: " + EscapeControls(failure) + "\n");
        site.status.failures.push_back(failure);
        site.verdict = Evaluate(site.status, options.thresholds);
    }
    console.out.Write(arguments.Get("--format") == "json" ? StatusAsJson(site.status, site.verdict)
                                                          : StatusAsText(site.status, site.verdict));
    return static_cast<int>(site.verdict.state);
}

int RunStatus(const CArguments& arguments, SConsole& console) {
    SStatusOptions options;
    SWhere where;
    const std::string_view mistake = FindWhere(arguments, where);
    console.error.Write(mistake);
    if (!mistake.empty() || !ParseStatusOptions(arguments, options, console)) {
        console.out.Write(kUsageVerdict);
        return kExitUnknown;
    }
    return arguments.Has("--all") ? RunOfAll(arguments, where, options, console)
                                  : RunOfOne(arguments, where, options, console);
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
