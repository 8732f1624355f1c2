#include "log/visit_lines.h"

#include "base/text.h"
#include "dayfile/day_file_writer.h"
#include "log/error_log.h"
#include "log/log_reserve.h"
#include "model/status/string_table.h"
#include "platform/full_path.h"
#include "platform/native_text.h"

#include <array>
#include <cstdio>

namespace ruvo {

namespace {

std::string SaveFailedText(const std::string& why) {
    const std::string text = FormatPositional(StringTextOrEmpty(kSaveFailedMessage), {why});
    return text.ends_with('.') ? text : text + ".";
}

std::string ReasonOf(const SRefusal& refusal) {
    switch (refusal.cause) {
    case ERefusal::UnfitName:
        return "The relay's model or serial number is unfit for a file name: " +
               NativeRelayText(refusal.subject);
    case ERefusal::DiskFull:
        return "The disk of " + DisplayPath(refusal.subject) + " is full";
    case ERefusal::NoMoreFiles:
        return "The disk of " + DisplayPath(refusal.subject) + " can take no more files";
    case ERefusal::FileNotHeld:
        break;
    }
    return refusal.subject;
}

/// An error's text as one sentence.
std::string ErrorText(const IError& error) {
    std::string text;
    error.GetMessageText(text);
    if (const auto* relayError = dynamic_cast<const CRelayError*>(&error)) {
        text += " " + relayError->GetDetail();
    }
    return text.ends_with('.') ? text : text + ".";
}

std::string VisitEndText(const SExtractionReport& report) {
    const std::string taken = "This visit has taken " + Counted(report.eventsTaken, "event") + "; ";
    if (report.end == EVisitEnd::LimitReached) {
        return taken + "the rest waits in the relay for the next run.";
    }
    if (report.end == EVisitEnd::JournalFailed) {
        return taken +
               "its journal cannot be written any more, and the rest waits in the relay for the next run.";
    }
    if (report.end == EVisitEnd::NoMoreFiles) {
        return taken + "the disk of " + DisplayPath(report.dayFile) +
               " can take no more files, and the rest waits in the relay for the next run.";
    }
    return taken + "there is no room for more in " +
           (report.end == EVisitEnd::JournalFull ? "the journal"
                                                 : "the disk of " + DisplayPath(report.dayFile)) +
           ", and the rest waits in the relay for the next run.";
}

std::string EventTime(const STimeFields& time) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d.%03d", time.year, time.month,
                  time.day, time.hour, time.minute, time.second, time.milliseconds);
    return text.data();
}

std::string IncompleteText(const SIncompleteRecords& records) {
    const std::string time = EventTime(records.firstTime);
    const std::size_t more = records.dropped.count - 1;
    return (records.count == 1
                ? "Event record of " + time + " is"
                : Counted(records.count, "event record") + ", the first of " + time + ", are") +
           " written without " + NativeRelayText(records.dropped.first) +
           (more > 0 ? " and " + std::to_string(more) + " more" : "") + ", which cannot be stored.";
}

template <class Word>
void WriteLine(ELineWorth worth, Word word) noexcept {
    WithLogReserve([&] { LogMessage(word(), true, worth); });
}

/// Why the relay has kept events, or the day file has not got them.
void LogFailures(const SExtractionReport& report, ELineWorth worth) noexcept {
    if (report.refusal) {
        WriteLine(worth, [&] {
            return SaveFailedText(ReasonOf(*report.refusal) + "; no event was taken from the relay.");
        });
    }
    for (const auto& error : report.columnErrors) {
        WriteLine(worth, [&] { return ErrorText(*error); });
    }
    if (report.failedWrite) {
        WriteLine(worth, [&] { return SaveFailedText(report.failedWrite->what()); });
    }
    if (report.end != EVisitEnd::NoMoreEvents) {
        WriteLine(worth, [&] { return VisitEndText(report); });
    }
}

/// What is wrong with the day file.
void LogDayFile(const SExtractionReport& report, ELineWorth worth) noexcept {
    const auto path = [&] { return DisplayPath(report.dayFile); };
    if (report.tornAfter) {
        WriteLine(worth, [&] {
            return path() + " could not be truncated to its earlier " + std::to_string(*report.tornAfter) +
                   " bytes; it may end with a torn record.";
        });
    }
    if (const std::size_t unflushed = report.recordsUnflushed; unflushed > 0) {
        WriteLine(worth, [&] {
            return "Day file " + path() + " could not be flushed to disk. It holds " +
                   Counted(unflushed, "event") + " of this visit, which a power failure may still lose.";
        });
    }
    if (report.isNameUnread) {
        WriteLine(worth, [&] {
            return "The relay's model or serial number could not be read. Its events are in " + path() + ".";
        });
    }
}

void LogIncomplete(const CIncompleteRecords& incomplete, ELineWorth worth) noexcept {
    for (const SIncompleteRecords& records : incomplete.Kinds()) {
        WriteLine(worth, [&] { return IncompleteText(records); });
    }
    if (const std::size_t others = incomplete.OtherCount(); others > 0) {
        WriteLine(worth, [&] {
            return Counted(others, "further event record") + (others == 1 ? " is" : " are") +
                   " written without items that cannot be stored.";
        });
    }
}

} // namespace

void LogVisit(const SExtractionReport& report) noexcept {
    const bool isLoss = report.eventsLost > 0 || report.eventsPassedOver > 0 || report.recordsUnflushed > 0;
    const ELineWorth worth = isLoss ? ELineWorth::TellsOfLoss : ELineWorth::Usual;
    LogFailures(report, worth);
    LogDayFile(report, worth);
    LogIncomplete(report.incomplete, worth);
    if (const std::size_t waiting = report.eventsWaiting; waiting > 0) {
        WriteLine(worth, [&] {
            return Counted(waiting, "event") + (waiting == 1 ? " waits" : " wait") +
                   " in the journal for the next run.";
        });
    }
    if (report.eventsPassedOver > 0) {
        WriteLine(worth, [&] {
            return Counted(report.eventsPassedOver, "event") + " of unknown kind passed over.";
        });
    }
    if (report.eventsLost > 0) { // from the number, which needs no memory to be kept
        WriteLine(worth, [&] {
            return Counted(report.eventsLost, "event") + " taken from the relay, but not stored.";
        });
    }
}

} // namespace ruvo
