// What recovery does with records that cannot go into their day file: they wait, and after a week they become
// a set-aside file; one that an ended run has begun is finished.
#include "ledger/entry_recovery.h"

#include "ledger/set_aside_file.h"
#include "ledger/waiting_time.h"
#include "platform/clock.h"

namespace ruvo {

bool CEntryRecovery::Wait(SJournalEntry& entry, const std::string& why) {
    const SCalendarTime now = UtcTime();
    const std::string today = UtcDateText(now);
    if (entry.waits.insert(today).second) {
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(today.data());
        static_cast<void>(m_journal.Append(EFrame::Waits, entry.visit, entry.chain, {bytes, today.size()}));
    }
    if (HasWaitedForAWeek(entry.info.begun, entry.waits, now)) {
        return SetAside(entry, "they had waited for a week: " + why);
    }
    TellWaits(entry, why);
    return false;
}

/// Those of its records that are in the day file count as stored.
bool CEntryRecovery::SetAside(SJournalEntry& entry, std::string reason) {
    SPlan plan;
    plan.store = entry.Wanted();
    if (IsSafePlace(entry.info.file)) {
        if (!FindMissing(entry, PathOf(entry), plan)) {
            reason += "; some of them may be in the day file";
        } else if (plan.isStored) {
            m_tell(ReportOf(ELedgerOutcome::Stored, entry));
            return Close(entry);
        } else {
            entry.store = plan.store;
        }
    }
    CSetAsideFile file;
    const bool isMade = file.Make(m_journal.Folder(), entry.info.file);
    if (!isMade || !file.FlushName()) {
        if (isMade) {
            file.Remove();
        }
        TellWaits(entry, NotSetAsideText(file));
        return false;
    }
    entry.setAside = SSetAsideInfo{file.Name(), reason};
    const bool isNamed =
        (!entry.store || m_journal.Append(EFrame::Store, entry.visit, entry.chain, Pack(*entry.store))) &&
        m_journal.Append(EFrame::SetAside, entry.visit, entry.chain, Pack(*entry.setAside));
    return WriteSetAside(entry, file, isNamed);
}

bool CEntryRecovery::FinishSetAside(SJournalEntry& entry) {
    const std::string& name = entry.setAside->name;
    if (!IsSetAsideName(name)) {
        TellWaits(entry, "the name of its set-aside file leads elsewhere");
        return false;
    }
    if (IsMarkedAppended(m_journal.Folder(), name)) {
        return Close(entry);
    }
    CSetAsideFile file;
    if (!file.Open(m_journal.Folder(), name)) {
        TellWaits(entry, NotSetAsideText(file));
        return false;
    }
    return WriteSetAside(entry, file, true);
}

/// Once the journal names it, on the disk.
bool CEntryRecovery::WriteSetAside(SJournalEntry& entry, CSetAsideFile& file, bool isNamed) {
    if (!isNamed || !m_journal.Flush()) {
        TellWaits(entry, std::string(kUnwrittenJournal));
        return false;
    }
    const SStoreInfo wanted = entry.Wanted();
    std::uint32_t count = 0;
    file.Start(wanted.lastExtended,
               {entry.info.file, entry.info.key, entry.info.begun, entry.setAside->reason});
    const bool isRead = ForEachImage(
        m_journal.File(), entry, wanted.records,
        [&](std::uint32_t, std::span<const std::uint8_t> image) { return file.Add(image), ++count, true; });
    if (!isRead) {
        file.GiveUp(kUnreadJournal);
    }
    if (!file.Finish() || !file.FlushName()) {
        TellWaits(entry, NotSetAsideText(file));
        return false;
    }
    m_tell({ELedgerOutcome::SetAside,
            count,
            file.Path(),
            {},
            entry.info.key,
            entry.info.begun,
            entry.setAside->reason});
    return Close(entry);
}

} // namespace ruvo
