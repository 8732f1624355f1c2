// ruvoctl soe: the sequence of events of many relays and sites.
#include "tools/command.h"
#include "tools/events/day_file_walk.h"
#include "tools/events/fetched_option.h"
#include "tools/events/filter_options.h"
#include "tools/events/format_options.h"
#include "tools/events/relay_selection.h"
#include "tools/given_time.h"
#include "tools/soe/sequence_output.h"
#include "tools/text_encoding.h"

#include <array>
#include <utility>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Files, "SITE.ini|FOLDER",
            "INI files of sites, folders that contain day files at any depth, or day files"},
    kFormatOption,
    kSpreadsheetOption,
    kDecimalCommaOption,
    kSinceOption,
    kUntilOption,
    kFetchedOption,
    kRelayOption,
    kMatchOption,
    SOption{EOptionKind::Text, "--zero",
            "also count from this time, or from the first event with this text in its texts or cells",
            "TIME|TEXT"},
    kClocksOption,
    kZoneOption,
};

constexpr std::string_view kNotes =
    R"(Events are in order of time, with the time since the one before. Without --clocks, times are compared
as the relays' clocks show them. With --clocks, each time becomes UTC first, so that relays in local time
and in UTC line up: a line of the file is RELAY CLOCK or SITE/RELAY CLOCK, and the first line that fits
applies. ruvo-exports(5) describes the file and the columns. --since, --until and --zero mean the times
that are shown; --fetched works as for ruvoctl events.
Marks after a time: "?" the relay reports its clock as unreliable, "~" the moment in UTC is doubtful,
"s" summer time. "?" after a difference: one of its two times has such a doubt.
Exit status: 0 on success, 1 if a file is damaged or cannot be read, or if no event has the text of
--zero, 2 on a usage error.

Example: what led to the trip, at both ends of the line
  ruvoctl soe north.ini south.ini --clocks clocks.txt --zone Europe/Berlin \
      --since 2026-11-16T03:12 --until 2026-11-16T03:13 --zero "I> trip")";

/// Reports options that contradict each other, or a mistake in one, and returns false.
bool ParseQuestion(const CArguments& arguments, SConsole& console, SSequenceQuestion& question) {
    if (!ParseFilterOptions(arguments, console, question.filter) || !CheckFormatOptions(arguments, console)) {
        return false;
    }
    question.hasClocks = arguments.Has("--clocks");
    if (!ParseZone(arguments, console, question.zone)) {
        return false;
    }
    const std::string zero = SystemTextToUtf8(arguments.Get("--zero"));
    question.zeroTime = ParseTimeKey(zero, EDayEdge::Start);
    question.zeroText = question.zeroTime ? std::string() : zero;
    return true;
}

/// True when everything was read and nothing was damaged.
bool ReadEvents(const SFoundFiles& found, CRelaySelection& selection, CEventSequence& sequence,
                SConsole& console) {
    bool isSound = true;
    const auto add = [&](const SEventSource& source, const SDayFileItem& item, CProgress& progress) {
        if (item.record != nullptr) {
            sequence.Add(source, item);
        }
        if (item.damage) {
            isSound = false;
            progress.Clear();
            console.error.Write("ruvoctl: " + EscapeControls(source.file) + ": damage at byte " +
                                std::to_string(item.damage->offset) + ", " +
                                std::to_string(item.damage->length) +
                                " bytes: " + std::string(DayFileFaultText(item.damage->fault)) + "\n");
        }
    };
    CDayFileWalk walk(console);
    walk.Read(found, selection.Only(add));
    if (!selection.SayIfNone(found, console) && sequence.Events().empty()) {
        console.error.Write("No event matches.\n");
    }
    return isSound && walk.Failures().empty();
}

void Print(const CArguments& arguments, const CEventSequence& sequence, SConsole& console) {
    const std::string format = arguments.Get("--format");
    if (format == "json") {
        PrintSequenceAsJson(console.out, sequence);
    } else if (format == "csv") {
        PrintSequenceAsCsv(console.out, sequence, CsvFormOf(arguments));
    } else {
        PrintSequenceAsText(console.out, sequence, ZoneName(arguments), console.width);
    }
    console.out.Flush();
}

int RunSoe(const CArguments& arguments, SConsole& console) {
    SSequenceQuestion question;
    CRelayClocks clocks;
    if (!ParseQuestion(arguments, console, question) || !ReadClocks(arguments, console, clocks)) {
        return kExitUsage;
    }
    SFoundFiles found = FindDayFiles(arguments.GetAll("SITE.ini|FOLDER"));
    if (!KeepFetched(arguments, console, found)) {
        return kExitUsage;
    }
    CRelaySelection selection(question.filter.relay);
    CompleteSources(arguments, clocks, found);
    if (question.hasClocks) {
        selection.ReportUnknownClocks(found, console);
    }
    CEventSequence sequence(std::move(question));
    const bool isSound = ReadEvents(found, selection, sequence, console);
    if (!sequence.Finish()) {
        console.error.Write("ruvoctl: --zero: no event with a time has the text \"" +
                            EscapeControls(sequence.Question().zeroText) + "\"\n");
        return kExitFailed;
    }
    Print(arguments, sequence, console);
    return isSound ? kExitGood : kExitFailed;
}

} // namespace

SCommand SoeCommand() {
    return {"soe", "Show the sequence of events of many relays and sites", kNotes, kOptions, RunSoe};
}

} // namespace ruvo
