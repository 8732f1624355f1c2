// Brings the entries of an ended run's journal into their day files. Nothing in a journal is trusted.
#pragma once

#include "dayfile/held_day_file.h"
#include "ledger/journal_entry.h"
#include "ledger/run_ledger.h"
#include "ledger/set_aside_file.h"

#include <optional>
#include <string>
#include <vector>

namespace ruvo {

class CEntryRecovery {
public:
    CEntryRecovery(const std::string& eventRoot, const LedgerListener& tell)
        : m_eventRoot(eventRoot), m_tell(tell) {}

    /// Brings in what is open in the journal: all of it, or what goes into the file that is held. Removes the
    /// journal when nothing is open in it any more and all of it could be read. False when an entry for the
    /// held file stays open.
    [[nodiscard]] bool BringIn(const std::string& journalPath, CHeldDayFile* held);

private:
    /// What is to be written, and where.
    struct SPlan {
        SStoreInfo store;
        bool isStored = false;    ///< all of it is in the file already, elsewhere
        bool isInPlace = false;   ///< over what is torn, or whole: the flush of it may have failed
        bool isElsewhere = false; ///< at the end: the file is no longer as it was
    };
    [[nodiscard]] bool Open(const std::string& journalPath, SJournalContents& contents);
    [[nodiscard]] bool BringInCopy(const std::string& journalPath, const SJournalContents& contents);
    [[nodiscard]] bool Settle(SJournalEntry& entry);
    [[nodiscard]] bool Close(SJournalEntry& entry);
    [[nodiscard]] bool HoldAndStore(SJournalEntry& entry);
    [[nodiscard]] bool Store(SJournalEntry& entry, CHeldDayFile& file);
    [[nodiscard]] bool MakePlan(const SJournalEntry& entry, CHeldDayFile& file, SPlan& plan);
    [[nodiscard]] bool FindMissing(const SJournalEntry& entry, const std::string& path, SPlan& plan);
    [[nodiscard]] bool Wait(SJournalEntry& entry, const std::string& why);
    [[nodiscard]] bool SetAside(SJournalEntry& entry, std::string reason);
    [[nodiscard]] bool FinishSetAside(SJournalEntry& entry);
    [[nodiscard]] bool WriteSetAside(SJournalEntry& entry, CSetAsideFile& file, bool isNamed);
    [[nodiscard]] SLedgerReport ReportOf(ELedgerOutcome outcome, const SJournalEntry& entry) const;
    void TellLost(const SJournalEntry& entry) const;
    void TellWaits(const SJournalEntry& entry, const std::string& why) const;
    [[nodiscard]] std::string PathOf(const SJournalEntry& entry) const;

    const std::string& m_eventRoot;
    const LedgerListener& m_tell;
    CJournalFile m_journal;
    CHeldDayFile* m_held = nullptr;
    std::string m_why; ///< what keeps the entry at hand from its day file
};

} // namespace ruvo
