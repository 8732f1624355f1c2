#include "log/ledger_lines.h"

#include "base/text.h"
#include "log/error_log.h"
#include "log/log_reserve.h"
#include "platform/full_path.h"

namespace ruvo {

namespace {

std::string StoredText(const SLedgerReport& report, const std::string& path) {
    return Counted(report.events, "event") + " of a visit that was ended " +
           (report.events == 1 ? "is" : "are") + " in day file " + path + " now. Visit of " + report.key +
           ", begun " + report.begun + ".";
}

} // namespace

std::string LedgerText(const SLedgerReport& report) {
    const std::string path = DisplayPath(report.path);
    const auto events = [&] { return Counted(report.events, "event"); };
    const auto visit = [&] { return " Visit of " + report.key + ", begun " + report.begun; };
    switch (report.outcome) {
    case ELedgerOutcome::UnknownJournal:
        return "Journal " + path +
               " was written by another version, or is not a journal. It is left unchanged.";
    case ELedgerOutcome::DamagedJournal:
        return "Journal " + path +
               " is damaged. Its readable events are recovered from a copy; it is kept as " + path +
               ".damaged.";
    case ELedgerOutcome::UnreadJournal:
        return "Journal " + path + " cannot be read. It is left unchanged; the next run tries again.";
    case ELedgerOutcome::UnreadFolder:
        return "Folder " + path +
               " cannot be read. Events of earlier visits may wait in its journals; the next run tries again.";
    case ELedgerOutcome::Stored:
        return StoredText(report, path);
    case ELedgerOutcome::StoredAtEnd:
        return StoredText(report, path) +
               " The file had changed since then; the missing events are at its end.";
    case ELedgerOutcome::Waits:
        return events() + (report.events == 1 ? " waits" : " wait") + " in journal " +
               DisplayPath(report.journal) + " for day file " + path + ": " + report.reason + ".";
    case ELedgerOutcome::Lost:
        return events() + " taken from the relay, but not stored." + visit() +
               ", which was ended; day file " + path + ". Cause: " + report.reason + ".";
    case ELedgerOutcome::PassedOver:
        return events() + " of unknown kind passed over." + visit() + ", which was ended; day file " + path +
               ".";
    case ELedgerOutcome::SetAside:
        return events() + " set aside in " + path + ": " + report.reason + "." + visit() +
               ". \"ruvoctl recover\" stores them in the day file.";
    case ELedgerOutcome::NotSetAside:
        break;
    }
    return "Visit of " + report.key + ": " + report.reason + ".";
}

void LogLedgerReport(const SLedgerReport& report) noexcept {
    WithLogReserve([&] { WriteLogLine(LedgerText(report), ELineWorth::TellsOfLoss); });
}

} // namespace ruvo
