#include "ledger/entry_recovery.h"

#include "base/digest.h"
#include "dayfile/day_file_reader.h"
#include "dayfile/day_file_writer.h"
#include "ledger/journal_copy.h"
#include "ledger/set_aside_file.h"
#include "ledger/standing_bytes.h"

#include <algorithm>
#include <array>
#include <unordered_map>

namespace ruvo {

namespace {

using Bytes = std::span<const std::uint8_t>;

std::uint64_t DigestOf(Bytes bytes) {
    std::uint64_t digest = kEmptyDigest + bytes.size();
    for (const std::uint8_t byte : bytes) {
        digest = AddToDigest(digest, byte);
    }
    return digest;
}

void AddToRuns(std::vector<SRecordRun>& runs, std::uint32_t record) {
    if (!runs.empty() && runs.back().first + runs.back().count == record) {
        ++runs.back().count;
    } else {
        runs.push_back({record, 1});
    }
}

CTextFileHeader HeaderFor(std::uint32_t lastExtended) {
    return MakeEventListHeader(lastExtended + 1, kEventListText);
}

constexpr const char* kUnreadable = "the file cannot be read";

bool IsMissing(const SFileResult& opened) {
    return opened.failure == EFileFailure::NotFound || opened.failure == EFileFailure::BadPath;
}

SLedgerReport JournalReport(ELedgerOutcome outcome, const std::string& path) {
    SLedgerReport report;
    report.outcome = outcome;
    report.path = path;
    return report;
}

} // namespace

bool CEntryRecovery::BringIn(const std::string& journalPath, CHeldDayFile* held) {
    m_held = held;
    SJournalContents contents;
    if (!Open(journalPath, contents)) {
        return true;
    }
    if (!contents.isWhole) {
        return BringInCopy(journalPath, contents);
    }
    m_journal.SetEnd(contents.end);
    static_cast<void>(m_journal.File().SetLength(contents.end)); // so that nothing follows what is added
    bool isFree = true;
    bool isAllDone = true;
    for (SJournalEntry& entry : contents.entries) {
        const bool isMeant = held == nullptr || PathOf(entry) == held->Path();
        const bool isSettled = entry.isDone || (isMeant && Settle(entry));
        isFree = isFree && (isSettled || !isMeant);
        isAllDone = isAllDone && isSettled;
    }
    if (isAllDone) {
        m_journal.Remove();
    }
    return isFree;
}

/// Of a damaged journal, which is kept under another name. The log has that before the name changes.
bool CEntryRecovery::BringInCopy(const std::string& journalPath, const SJournalContents& contents) {
    const bool isOpen = !std::ranges::all_of(contents.entries, &SJournalEntry::isDone);
    const SFileResult copied =
        isOpen ? CopyOpenEntries(journalPath, m_journal.File(), contents) : SFileResult();
    if (!copied.Good()) {
        bool isFree = true;
        for (const SJournalEntry& entry : contents.entries) {
            if (!entry.isDone) {
                TellWaits(entry,
                          "the journal is damaged, and cannot be copied" +
                              (copied.systemCode != 0 ? ": " + SystemErrorText(copied.systemCode) : ""));
                isFree = isFree && (m_held == nullptr || PathOf(entry) != m_held->Path());
            }
        }
        return isFree;
    }
    m_tell(JournalReport(ELedgerOutcome::DamagedJournal, journalPath));
    static_cast<void>(RenameFile(journalPath, journalPath + std::string(kDamagedEnding)));
    FlushFolder(m_journal.Folder());
    return !isOpen || CEntryRecovery(m_eventRoot, m_tell).BringIn(CopyPathOf(journalPath), m_held);
}

/// False for a journal that is left unchanged. To cut one that could be read in part only, or to add to it,
/// would lose the rest.
bool CEntryRecovery::Open(const std::string& journalPath, SJournalContents& contents) {
    const EJournalOpening opening = m_journal.OpenEnded(journalPath);
    if (opening == EJournalOpening::InUse) {
        return false;
    }
    const EJournalHead head =
        opening == EJournalOpening::Opened ? m_journal.Head() : EJournalHead::Unreadable;
    if (head == EJournalHead::Known) {
        contents = ReadJournal(m_journal.File());
        if (contents.isRead) {
            return true;
        }
    }
    if (m_held == nullptr) {
        const bool isUnknown = head == EJournalHead::Unknown;
        m_tell(JournalReport(isUnknown ? ELedgerOutcome::UnknownJournal : ELedgerOutcome::UnreadJournal,
                             journalPath));
    }
    return false;
}

std::string CEntryRecovery::PathOf(const SJournalEntry& entry) const {
    return m_eventRoot + "\\" + entry.info.file;
}

bool CEntryRecovery::Settle(SJournalEntry& entry) {
    if (entry.setAside) {
        return FinishSetAside(entry);
    }
    if (entry.IsDropped()) {
        entry.records = 0;
        entry.lost = {};
    }
    if (!IsSafePlace(entry.info.file)) {
        return Wait(entry, "its name leads out of the event root");
    }
    if (entry.records > 0) {
        m_why.clear();
        if (!HoldAndStore(entry)) {
            return !m_why.empty() && Wait(entry, m_why); // without a reason it is left for later
        }
    }
    return Close(entry);
}

bool CEntryRecovery::Close(SJournalEntry& entry) {
    const bool isFileUnused = entry.records == 0 || entry.setAside;
    if (m_held == nullptr && isFileUnused && entry.info.isFileMade && IsSafePlace(entry.info.file)) {
        RemoveEmptyDayFile(PathOf(entry), entry.info.isFolderMade);
    }
    if (entry.records > 0 && IsSetAsideName(entry.info.source) &&
        !MarkAppended(m_journal.Folder(), entry.info.source)) {
        return false;
    }
    TellLost(entry);
    return m_journal.Append(EFrame::Done, entry.visit, entry.chain, {}) && m_journal.Flush();
}

bool CEntryRecovery::HoldAndStore(SJournalEntry& entry) {
    if (m_held != nullptr) {
        return Store(entry, *m_held);
    }
    CHeldDayFile own;
    if (const auto failure = own.Hold(PathOf(entry))) {
        m_why = failure->cause == EFileCause::SharingViolation ? "" : failure->why;
        return false;
    }
    return Store(entry, own);
}

bool CEntryRecovery::Store(SJournalEntry& entry, CHeldDayFile& file) {
    SPlan plan;
    if (!MakePlan(entry, file, plan)) {
        return false;
    }
    const bool isAnnounced = plan.isStored || !plan.isElsewhere ||
                             m_journal.Append(EFrame::Store, entry.visit, entry.chain, Pack(plan.store));
    if (!isAnnounced || !m_journal.Flush()) { // it has to outlast what is written by it
        m_why = kUnwrittenJournal;
        return false;
    }
    try {
        file.StartAt(plan.store.length, HeaderFor(plan.store.lastExtended));
        const bool isRead =
            plan.isStored || ForEachImage(m_journal.File(), entry, plan.store.records,
                                          [&](std::uint32_t, Bytes image) { return file.Add(image), true; });
        file.Finish();
        if (!isRead) {
            m_why = kUnreadJournal;
            return false;
        }
    } catch (const CFileException& failure) {
        if (!plan.isInPlace) {
            file.CutBack();
        }
        m_why = failure.what();
        return false;
    }
    SLedgerReport report = ReportOf(
        plan.isElsewhere && !plan.isStored ? ELedgerOutcome::StoredAtEnd : ELedgerOutcome::Stored, entry);
    if (!plan.isStored) {
        report.from = file.WrittenFrom();
        report.to = file.WrittenTo();
    }
    m_tell(report);
    return true;
}

bool CEntryRecovery::MakePlan(const SJournalEntry& entry, CHeldDayFile& file, SPlan& plan) {
    plan.store = entry.Wanted();
    const std::uint64_t length = file.LengthNow();
    CStandingBytes standing(file.File(), plan.store.length, length);
    bool isRead = true;
    if (plan.store.length == 0) {
        const std::string header = COffFile::HeaderBytes(HeaderFor(plan.store.lastExtended));
        isRead = standing.Compare({reinterpret_cast<const std::uint8_t*>(header.data()), header.size()});
    }
    isRead = isRead && ForEachImage(m_journal.File(), entry, plan.store.records,
                                    [&](std::uint32_t, Bytes image) { return standing.Compare(image); });
    const EStanding outcome = isRead ? standing.Outcome() : EStanding::Unread;
    if (outcome == EStanding::Unread) {
        m_why = "its journal or its day file cannot be read";
        return false;
    }
    plan.isInPlace = outcome == EStanding::Torn || outcome == EStanding::All;
    if (outcome != EStanding::Other) {
        return true;
    }
    const SDayFileEnd end = ReadDayFileEnd(file.Path());
    if (!end.isRead || end.torn) {
        m_why = end.isRead ? "the file does not end with a whole record" : kUnreadable;
        return false;
    }
    plan.isElsewhere = true;
    return FindMissing(entry, file.Path(), plan) && (plan.store.length = length, true);
}

/// The records that are in the file, whole and in order, count as stored. False when that is not known.
bool CEntryRecovery::FindMissing(const SJournalEntry& entry, const std::string& path, SPlan& plan) {
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> standing;
    CDayFileReader reader;
    const SFileResult opened = reader.Open(path, {.read = true, .plain = true});
    // One that is held is there.
    bool isFileRead = opened.Good() || (!plan.isElsewhere && IsMissing(opened));
    std::size_t number = 0;
    for (SDayFileItem item; opened.Good() && isFileRead && reader.Next(item);) {
        isFileRead = !item.IsReadFailure();
        if (item.record != nullptr && item.offset >= plan.store.length) {
            standing[DigestOf(item.bytes)].push_back(number++);
        }
    }
    if (!isFileRead) {
        m_why = kUnreadable;
        return false;
    }
    std::vector<SRecordRun> missing;
    std::size_t next = 0; // the first of those that may still be found
    const auto look = [&](std::uint32_t record, Bytes image) {
        const auto alike = standing.find(DigestOf(image));
        const auto found = alike == standing.end() ? std::vector<std::size_t>::iterator()
                                                   : std::ranges::lower_bound(alike->second, next);
        if (alike == standing.end() || found == alike->second.end()) {
            AddToRuns(missing, record);
        } else {
            next = *found + 1;
        }
        return true;
    };
    const bool isRead = ForEachImage(m_journal.File(), entry, plan.store.records, look);
    plan.store.records = std::move(missing);
    plan.isStored = plan.store.records.empty();
    if (!isRead) {
        m_why = kUnreadJournal;
    }
    return isRead;
}

SLedgerReport CEntryRecovery::ReportOf(ELedgerOutcome outcome, const SJournalEntry& entry) const {
    return {outcome, entry.records, PathOf(entry), {}, entry.info.key, entry.info.begun, {}};
}

/// In the words that a visit has for them which has not been ended.
void CEntryRecovery::TellLost(const SJournalEntry& entry) const {
    constexpr std::array<const char*, kLostCauses> kCauses{"not known", "", "a reply that makes no sense",
                                                           "a record that could not be read", "no memory"};
    for (std::size_t cause = 0; cause < kLostCauses; ++cause) {
        if (entry.lost.at(cause) > 0) {
            const bool isKindUnknown = cause == static_cast<std::size_t>(ELostCause::UnknownKind);
            SLedgerReport report =
                ReportOf(isKindUnknown ? ELedgerOutcome::PassedOver : ELedgerOutcome::Lost, entry);
            report.events = entry.lost.at(cause);
            report.reason = kCauses.at(cause);
            m_tell(report);
        }
    }
}

void CEntryRecovery::TellWaits(const SJournalEntry& entry, const std::string& why) const {
    SLedgerReport report = ReportOf(ELedgerOutcome::Waits, entry);
    report.journal = m_journal.Path();
    report.reason = why;
    m_tell(report);
}

} // namespace ruvo
