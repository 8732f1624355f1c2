// ruvoctl report: creates a page for a browser from day files and the error log.
#include "base/text.h"
#include "paths/path_utilities.h"
#include "platform/clock.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "tools/command.h"
#include "tools/events/day_file_walk.h"
#include "tools/events/fetched_option.h"
#include "tools/events/filter_options.h"
#include "tools/events/relay_selection.h"
#include "tools/file_path.h"
#include "tools/report/report_data.h"
#include "tools/report/report_logs.h"
#include "tools/report/report_page.h"
#include "tools/text_encoding.h"
#include "tools/typed_path.h"
#include "tools/whole_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace ruvo {

namespace {

constexpr std::string_view kUsualTitle = "Relay events";
constexpr unsigned kUsualSilentDays = 14; // as ruvoctl status warns
constexpr unsigned kMostSilentDays = 3660;

constexpr std::array kOptions{
    SOption{
        EOptionKind::Files, "SITE.ini|EVENTROOT",
        "INI files of sites, whose error logs are shown too; folders that contain day files at any depth, or "
        "day files"},
    SOption{EOptionKind::Text, "-o,--output",
            "write the page to this file, replacing an existing one; - for standard output", "FILE"},
    SOption{EOptionKind::Repeated, "--log", "also show the problems from this error log; can be repeated",
            "FILE"},
    kSinceOption,
    kUntilOption,
    kFetchedOption,
    kRelayOption,
    kMatchOption,
    SOption{EOptionKind::Text, "--silent",
            "call a relay silent that has had no new day file for more than DAYS days, up to now or --until "
            "(default: 14)",
            "DAYS"},
    kClocksOption,
    kZoneOption,
    SOption{EOptionKind::Text, "--title", "heading of the page (default: the name of a single site)"},
};

constexpr std::string_view kNotes =
    R"(The page is a single file that needs no network: it can be mailed, archived and printed.
--since and --until also apply to the error log, whose times are local to this machine; event times are
the relays' own. With --clocks, which works as for ruvoctl soe, all times on the page are those of --zone,
and so are --since and --until. --fetched works as for ruvoctl events. A relay's last day is the UTC date of
its newest day file, as in ruvoctl status.
Lines about the link to a muted relay (ruvoctl mute) raise no alarm on the page, and say until when and why.
Exit status: 0 on success, 1 if a file is damaged or cannot be read or written, 2 on a usage error.

Example: this week, for the morning meeting
  ruvoctl report /etc/ruvo/north.ini --since 2026-11-16 --title "Northfield 33 kV" -o week.html)";

/// "2026-11-16 23:30:00", the form that the page's script parses.
std::string NowText() {
    const SCalendarTime now = UtcTime();
    std::array<char, 80> text{}; // room for six ints of any value
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", now.year, now.month, now.day,
                  now.hour, now.minute, now.second);
    return text.data();
}

std::string Summary(const CReportData& data) {
    return Counted(data.EventCount(), "event") + " of " + Counted(data.RelayCount(), "relay") + ", " +
           Counted(data.ProblemCount(), "problem") + ", " + Counted(data.DamageCount(), "damaged place");
}

/// Reports a failure to write and returns false.
bool PutPage(const std::string& path, const std::string& page, const CReportData& data, SConsole& console) {
    if (path == "-") {
        console.out.Write(page);
        return true;
    }
    const std::string shownPath = EscapeControls(SystemTextToUtf8(path));
    if (const std::string failure = ReplaceWholeFile(path, page); !failure.empty()) {
        console.error.Write("ruvoctl: " + shownPath + ": " + failure + "\n");
        return false;
    }
    console.out.Write(shownPath + ": " + Summary(data) + "\n");
    return true;
}

/// The last day on which a relay can have had a day file: today, or that of --until.
std::string LastDay(const std::string& until) {
    constexpr std::size_t kDateSize = std::string_view("2026-11-16").size();
    const std::string today = NowText().substr(0, kDateSize);
    return until.empty() ? today : std::min(today, until.substr(0, kDateSize));
}

/// True when everything was read and nothing was damaged.
bool AddEvents(const SFoundFiles& found, const SEventFilter& filter, const CZoneRule* zone, CReportData& data,
               SConsole& console) {
    CRelaySelection selection(filter.relay);
    const SEventFilter texts = TextsOf(filter);
    if (zone != nullptr) {
        selection.ReportUnknownClocks(found, console);
    }
    const std::string lastDay = LastDay(filter.untilText);
    for (const SFoundFile& file : found.files) {
        const std::string day = DayOfFileName(FilePath(file.path).filename().string());
        if (day <= lastDay) {
            data.AddDay(file.relay, day);
        }
        if (selection.MatchesName(file.relay)) {
            data.AddRelay(file.relay);
        }
    }
    const auto add = [&](const SEventSource& source, const SDayFileItem& item, CProgress& /*progress*/) {
        data.AddRelay(source.relay);
        if (item.record != nullptr) {
            const SShownStamp stamp = ShowStamp(item.record->GetTimeStamp(), source.clock, zone);
            data.NoteRecord(source, *item.record);
            if (texts.MatchesRecord(*item.record) && IsWithin(filter, stamp.time)) {
                data.AddRecord(source, item, stamp);
            }
        }
        if (item.damage) {
            data.AddDamage(source, *item.damage);
        }
    };
    CDayFileWalk walk(console);
    walk.Read(found, selection.Only(add));
    if (data.EventCount() == 0 && !selection.SayIfNone(found, console)) {
        console.error.Write("No event matches.\n");
    }
    for (const std::string& failure : walk.Failures()) {
        data.AddFailure(failure);
    }
    return walk.Failures().empty() && data.DamageCount() == 0;
}

/// Reports an invalid number of days and returns none.
std::optional<unsigned> SilentDays(const CArguments& arguments, SConsole& console) {
    if (!arguments.Has("--silent")) {
        return kUsualSilentDays;
    }
    const std::string text = arguments.Get("--silent");
    const char* const end = text.data() + text.size();
    unsigned days = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, days);
    if (error == std::errc() && stop == end && days >= 1 && days <= kMostSilentDays) {
        return days;
    }
    console.error.Write("--silent: " + EscapeControls(text) + ": expected a number of days from 1 to " +
                        std::to_string(kMostSilentDays) + "\n");
    return std::nullopt;
}

bool IsSite(const std::string& place) {
    return EqualIniNames(SplitPath(place).extension, ".ini");
}

/// As given, else the name of the only site.
std::string TitleOf(const CArguments& arguments) {
    if (arguments.Has("--title")) {
        return SystemTextToUtf8(arguments.Get("--title"));
    }
    const std::vector<std::string> places = arguments.GetAll("SITE.ini|EVENTROOT");
    return places.size() == 1 && IsSite(places.front()) ? SystemTextToUtf8(SplitPath(places.front()).name)
                                                        : std::string(kUsualTitle);
}

/// Those of the sites, then those of --log. A site that cannot be read is reported with its day files.
CReportLogs FindLogs(const CArguments& arguments, CReportData& data) {
    CReportLogs logs;
    for (const std::string& place : arguments.GetAll("SITE.ini|EVENTROOT")) {
        if (IsSite(place)) {
            logs.AddSite(TypedPath(place), data);
        }
    }
    for (const std::string& log : arguments.GetAll("--log")) {
        logs.AddLog(log);
    }
    return logs;
}

int RunReport(const CArguments& arguments, SConsole& console) {
    SEventFilter filter;
    const std::optional<unsigned> silentDays = SilentDays(arguments, console);
    CRelayClocks clocks;
    CZoneRule zone;
    if (!silentDays || !ParseFilterOptions(arguments, console, filter) ||
        !ParseZone(arguments, console, zone) || !ReadClocks(arguments, console, clocks)) {
        return kExitUsage;
    }
    const CZoneRule* const shownIn = arguments.Has("--clocks") ? &zone : nullptr;
    if (!arguments.Has("--output")) {
        console.error.Write("ruvoctl report: no output given; use -o FILE, or -o - for standard output\n");
        return kExitUsage;
    }
    SFoundFiles found = FindDayFiles(arguments.GetAll("SITE.ini|EVENTROOT"));
    if (!KeepFetched(arguments, console, found)) {
        return kExitUsage;
    }
    CompleteSources(arguments, clocks, found);
    CReportData data(shownIn);
    bool isGood = AddEvents(found, filter, shownIn, data, console);
    CReportLogs logs = FindLogs(arguments, data);
    isGood = logs.Read(filter, shownIn, data, console) && isGood;
    const SReportHead head{.title = TitleOf(arguments),
                           .made = NowText(),
                           .since = filter.sinceText,
                           .until = filter.untilText,
                           .relay = filter.relay,
                           .match = filter.match,
                           .logs = logs.Names(),
                           .silentDays = *silentDays,
                           .zone = ZoneName(arguments)};
    std::string json;
    data.WriteJson(json, head);
    isGood = PutPage(arguments.Get("--output"), MakePage(json), data, console) && isGood;
    return isGood ? kExitGood : kExitFailed;
}

} // namespace

SCommand ReportCommand() {
    return {"report", "Create an HTML page with timeline, events and problems", kNotes, kOptions, RunReport};
}

} // namespace ruvo
