// ruvoctl events: day files for people and scripts.
#include "tools/command.h"
#include "tools/events/day_file_walk.h"
#include "tools/events/event_files.h"
#include "tools/events/event_filter.h"
#include "tools/events/event_printer.h"
#include "tools/events/filter_options.h"
#include "tools/events/format_options.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::List, "FILE|FOLDER", "day files, or folders that hold them at any depth"},
    kFormatOption,
    kSpreadsheetOption,
    kSinceOption,
    kUntilOption,
    kRelayOption,
    SOption{EOptionKind::Text, "--match",
            "events with this text in their texts or cells, in any letter case"},
    SOption{EOptionKind::Choice, "--sort", "by time across all files; without it in file order", "time"},
};

constexpr std::string_view kNotes =
    "Damaged places are shown where they are, with their offset and length, and reading goes on behind "
    "them.\n"
    "In text, \"s\" behind a time stands for summer time and \"?\" for a clock that the relay does not "
    "trust.\n"
    "Exit status: 0, or 1 when there was damage or something could not be read, or 2 for a mistake in the "
    "arguments.\n\n"
    "Example: what happened tonight at the feeders?\n"
    "  ruvoctl events --since 2026-11-16T03:00 --relay FEED --sort time events/";

/// Puts what is printed where it belongs: straight out, or aside until all is read and sorted.
class CEventSink {
public:
    CEventSink(CTextOutput& out, IEventPrinter& printer, bool sort)
        : m_out(out), m_printer(printer), m_sort(sort) {
        m_printer.PrintHead(m_out.Text());
    }

    void TakeRecord(const SEventSource& source, const SDayFileItem& item) {
        if (!m_sort) {
            m_printer.PrintRecord(m_out.Text(), source, item);
            m_out.Settle();
            return;
        }
        std::string text;
        m_printer.PrintRecord(text, source, item);
        m_records.emplace_back(TimeKeyOf(item.record->GetTimeStamp()), std::move(text));
    }

    /// Damage has no time; when records are sorted it follows them all.
    void TakeDamage(const SEventSource& source, const SDayFileDamage& damage) {
        m_printer.PrintDamage(m_sort ? m_damage : m_out.Text(), source, damage);
        m_out.Settle();
    }

    /// False when what it takes is printed only at the end.
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
    if (!TakeFilterOptions(arguments, console, filter) || !CheckFormatOptions(arguments, console)) {
        return kExitUsage;
    }
    SFoundFiles found = FindDayFiles(arguments.GetAll("FILE|FOLDER"));
    std::erase_if(found.files, [&filter](const SFoundFile& file) { return !filter.TakesRelay(file.relay); });
    std::size_t relayWidth = 0;
    for (const SFoundFile& file : found.files) {
        relayWidth = std::max(relayWidth, ColumnsOf(file.relay));
    }
    const std::unique_ptr<IEventPrinter> printer = MakePrinter(arguments, relayWidth, console.width);
    CEventSink sink(console.out, *printer, arguments.Has("--sort"));
    bool isSound = true;
    CDayFileWalk walk(console);
    walk.Read(found, [&](const SEventSource& source, const SDayFileItem& item, CProgress& progress) {
        const bool isTaken = item.record != nullptr && filter.TakesRecord(*item.record);
        if (sink.PrintsAtOnce() && (isTaken || item.damage)) {
            progress.GiveWayToOutput();
        }
        if (isTaken) {
            sink.TakeRecord(source, item);
        }
        if (item.damage) {
            sink.TakeDamage(source, *item.damage);
            isSound = false;
        }
    });
    sink.Finish();
    return isSound && walk.Failures().empty() ? kExitGood : kExitFailed;
}

} // namespace

SCommand EventsCommand() {
    return {"events", "Show the events of day files", kNotes, kOptions, RunEvents};
}

} // namespace ruvo
