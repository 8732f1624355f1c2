// ruvoctl events: day files for people and scripts.
#include "eventfiles/day_file_reader.h"
#include "platform/files.h"
#include "tools/command.h"
#include "tools/events/event_files.h"
#include "tools/events/event_filter.h"
#include "tools/events/event_printer.h"
#include "tools/progress.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace ruvo {

namespace {

constexpr std::size_t kWidestRelay = 24;
constexpr std::size_t kNarrowestRest = 46; ///< what the text's other columns need

constexpr std::array kOptions{
    SOption{EOptionKind::List, "FILE|FOLDER", "day files, or folders that hold them at any depth"},
    SOption{EOptionKind::Choice, "--format",
            "text (default) for reading, json: an object a line, csv: with a header line", "text|json|csv",
            "text"},
    SOption{EOptionKind::Text, "--since",
            "events of this date (2026-11-16) or moment (2026-11-16T03:12) and later"},
    SOption{EOptionKind::Text, "--until", "events of this date or moment and earlier"},
    SOption{EOptionKind::Text, "--relay", "relays whose name holds this text, in any letter case"},
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

/// One run of the command over its files.
class CEventsRun {
public:
    CEventsRun(SConsole& console, const SEventFilter& filter) : m_console(console), m_filter(filter) {}

    /// True when everything was read and nothing was damaged.
    bool Read(const SFoundFiles& found, CEventSink& sink) {
        for (const std::string& failure : found.failures) {
            Complain(failure);
        }
        CProgress progress(m_console, found.files.size());
        std::size_t done = 0;
        for (const SFoundFile& file : found.files) {
            if (m_console.out.IsGood()) {
                ReadDayFile(file, sink, progress, done);
            }
            ++done;
        }
        return m_isGood;
    }

private:
    void ReadDayFile(const SFoundFile& file, CEventSink& sink, CProgress& progress, std::size_t filesDone) {
        if (const SFileResult opened = m_reader.Open(file.path); !opened.Good()) {
            progress.Clear();
            Complain(file.path + ": " + SystemErrorText(opened.systemCode));
            return;
        }
        const SEventSource source{SystemTextToUtf8(file.path), file.relay};
        SDayFileItem item;
        while (m_console.out.IsGood() && m_reader.Next(item)) {
            TakeItem(source, item, sink, progress);
            progress.Tell(filesDone, m_bytes + m_reader.Position());
        }
        m_bytes += m_reader.Position();
    }

    void TakeItem(const SEventSource& source, const SDayFileItem& item, CEventSink& sink,
                  CProgress& progress) {
        const bool isTaken = item.record != nullptr && m_filter.TakesRecord(*item.record);
        if (sink.PrintsAtOnce() && (isTaken || item.damage)) {
            progress.GiveWayToOutput();
        }
        if (isTaken) {
            sink.TakeRecord(source, item);
        }
        if (item.damage) {
            sink.TakeDamage(source, *item.damage);
            m_isGood = false;
        }
    }

    void Complain(const std::string& what) {
        m_console.error.Write("ruvoctl: " + EscapeControls(SystemTextToUtf8(what)) + "\n");
        m_console.error.Flush();
        m_isGood = false;
    }

    SConsole& m_console;
    const SEventFilter& m_filter;
    CDayFileReader m_reader;
    std::uint64_t m_bytes = 0;
    bool m_isGood = true;
};

/// False, with a word about it, when a time given is none.
bool TakeTime(const CArguments& arguments, std::string_view name, EDayEdge edge, std::optional<TimeKey>& key,
              SConsole& console) {
    if (!arguments.Has(name)) {
        return true;
    }
    key = ParseTimeKey(arguments.Get(name), edge);
    if (!key) {
        console.error.Write(std::string(name) + ": " + EscapeControls(arguments.Get(name)) +
                            ": want a date as 2026-11-16 or a moment as 2026-11-16T03:12:45\n");
    }
    return key.has_value();
}

std::unique_ptr<IEventPrinter> MakePrinter(const CArguments& arguments, const SFoundFiles& found,
                                           std::size_t width) {
    const std::string format = arguments.Get("--format");
    if (format == "json") {
        return MakeJsonPrinter();
    }
    if (format == "csv") {
        return MakeCsvPrinter();
    }
    std::size_t relayWidth = std::string_view("relay").size();
    for (const SFoundFile& file : found.files) {
        relayWidth = std::max(relayWidth, ColumnsOf(file.relay));
    }
    return MakeTextPrinter(width, std::min({relayWidth, kWidestRelay, width - kNarrowestRest}));
}

int RunEvents(const CArguments& arguments, SConsole& console) {
    SEventFilter filter{
        .since = {}, .until = {}, .relay = arguments.Get("--relay"), .match = arguments.Get("--match")};
    if (!TakeTime(arguments, "--since", EDayEdge::Start, filter.since, console) ||
        !TakeTime(arguments, "--until", EDayEdge::End, filter.until, console)) {
        return kExitUsage;
    }
    SFoundFiles found = FindDayFiles(arguments.GetAll("FILE|FOLDER"));
    std::erase_if(found.files, [&filter](const SFoundFile& file) { return !filter.TakesRelay(file.relay); });
    const std::unique_ptr<IEventPrinter> printer = MakePrinter(arguments, found, console.width);
    CEventSink sink(console.out, *printer, arguments.Has("--sort"));
    const bool isGood = CEventsRun(console, filter).Read(found, sink);
    sink.Finish();
    return isGood ? kExitGood : kExitFailed;
}

} // namespace

SCommand EventsCommand() {
    return {"events", "Show the events of day files", kNotes, kOptions, RunEvents};
}

} // namespace ruvo
