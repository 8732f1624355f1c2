// ruvoctl events: prints day files for people and scripts.
#include "tools/command.h"
#include "tools/events/day_file_walk.h"
#include "tools/events/event_files.h"
#include "tools/events/event_filter.h"
#include "tools/events/event_printer.h"
#include "tools/events/fetched_option.h"
#include "tools/events/filter_options.h"
#include "tools/events/format_options.h"
#include "tools/events/relay_selection.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Files, "FILE|FOLDER",
            "day files, folders that contain them at any depth, or INI files of sites"},
    kFormatOption,
    kSpreadsheetOption,
    kDecimalCommaOption,
    kSinceOption,
    kUntilOption,
    kFetchedOption,
    kRelayOption,
    kMatchOption,
    kSiteOption,
    kClocksOption,
    SOption{EOptionKind::Choice, "--sort", "sort by time across all files (default: file order)", "time"},
};

constexpr std::string_view kNotes =
    R"(Damaged places are printed where they occur, with offset and length; reading continues after them.
In text output, "s" after a time marks summer time, and "?" a time from a clock that the relay reports
as unreliable.
--fetched takes from the records of visits what came in: also old events of a relay that was out of reach,
and recovered ones. Times are those of this machine. A day file without such a record, such as a copy on
another machine, counts by the UTC day in its name; a message says so.
If nothing is found, a message on standard error says so, and which relays there are if none matches.
Exit status: 0 on success, also if nothing is found, 1 if a file is damaged or cannot be read, 2 on a usage error.

Examples: what came in yesterday, and last night's events of the feeders
  ruvoctl events --fetched yesterday --sort time events/
  ruvoctl events --since 2026-11-16T03:00 --relay FEED --sort time events/)";

/// Writes printed records to the output at once, or keeps them until all are read and sorted.
class CEventSink {
public:
    CEventSink(CTextOutput& out, IEventPrinter& printer, bool sort)
        : m_out(out), m_printer(printer), m_sort(sort) {
        m_printer.PrintHead(m_out.Text());
    }

    void AddRecord(const SEventSource& source, const SDayFileItem& item) {
        if (!m_sort) {
            m_printer.PrintRecord(m_out.Text(), source, item);
            m_out.FlushIfFull();
            return;
        }
        std::string text;
        m_printer.PrintRecord(text, source, item);
        m_records.emplace_back(TimeKeyOf(item.record->GetTimeStamp()), std::move(text));
    }

    /// Damage has no time; in sorted output it follows all records.
    void AddDamage(const SEventSource& source, const SDayFileDamage& damage) {
        m_printer.PrintDamage(m_sort ? m_damage : m_out.Text(), source, damage);
        m_out.FlushIfFull();
    }

    /// False when the output is written only at the end.
    bool PrintsAtOnce() const { return !m_sort; }

    void Finish() {
        std::ranges::stable_sort(m_records, {}, &std::pair<TimeKey, std::string>::first);
        for (const auto& [key, text] : m_records) {
            m_out.Write(text);
        }
        m_out.Write(m_damage);
        m_out.Flush();
    }

private:
    CTextOutput& m_out;
    IEventPrinter& m_printer;
    bool m_sort;
    std::vector<std::pair<TimeKey, std::string>> m_records;
    std::string m_damage;
};

int RunEvents(const CArguments& arguments, SConsole& console) {
    SEventFilter filter;
    CRelayClocks clocks;
    if (!ParseFilterOptions(arguments, console, filter) || !CheckFormatOptions(arguments, console) ||
        !ReadClocks(arguments, console, clocks)) {
        return kExitUsage;
    }
    SFoundFiles found = FindDayFiles(arguments.GetAll("FILE|FOLDER"));
    if (!KeepFetched(arguments, console, found)) {
        return kExitUsage;
    }
    CompleteSources(arguments, clocks, found);
    CRelaySelection selection(filter.relay);
    std::size_t relayWidth = 0;
    for (const SFoundFile& file : found.files) {
        relayWidth = std::max(relayWidth, ColumnsOf(file.relay));
    }
    const std::unique_ptr<IEventPrinter> printer = MakePrinter(arguments, relayWidth, console.width);
    CEventSink sink(console.out, *printer, arguments.Has("--sort"));
    bool isSound = true;
    bool isAnyFound = false;
    const auto print = [&](const SEventSource& source, const SDayFileItem& item, CProgress& progress) {
        const bool isTaken = item.record != nullptr && filter.MatchesRecord(*item.record);
        if (sink.PrintsAtOnce() && (isTaken || item.damage)) {
            progress.GiveWayToOutput();
        }
        if (isTaken) {
            sink.AddRecord(source, item);
            isAnyFound = true;
        }
        if (item.damage) {
            sink.AddDamage(source, *item.damage);
            isSound = false;
        }
    };
    CDayFileWalk walk(console);
    walk.Read(found, selection.Only(print));
    sink.Finish();
    if (!isAnyFound && !selection.SayIfNone(found, console)) {
        console.error.Write("No event matches.\n");
    }
    return isSound && walk.Failures().empty() ? kExitGood : kExitFailed;
}

} // namespace

SCommand EventsCommand() {
    return {"events", "Show the events in day files", kNotes, kOptions, RunEvents};
}

} // namespace ruvo
