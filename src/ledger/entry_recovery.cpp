#include "ledger/entry_recovery.h"

#include "base/text.h"
#include "dayfile/day_file_reader.h"
#include "dayfile/day_file_writer.h"
#include "ledger/standing_bytes.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"

#include <algorithm>
#include <unordered_map>

namespace ruvo {

namespace {

using Bytes = std::span<const std::uint8_t>;

/// One name of a relay's, which leads nowhere else.
bool IsSafeName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && !HasForbiddenCharacter(name) &&
           std::ranges::none_of(name, [](char c) { return IsControlCharacter(c) || c == '\\' || c == ':'; });
}

std::uint64_t DigestOf(Bytes bytes) {
    std::uint64_t sum = 0xCBF29CE484222325 + bytes.size();
    for (const std::uint8_t byte : bytes) {
        sum = (sum ^ byte) * 0x100000001B3;
    }
    return sum;
}

void AddToRuns(std::vector<SRecordRun>& runs, std::uint32_t record) {
    if (!runs.empty() && runs.back().first + runs.back().count == record) {
        ++runs.back().count;
    } else {
        runs.push_back({record, 1});
    }
}

/// Says of one record after the other whether it is in the runs.
class CSelection {
public:
    explicit CSelection(const std::vector<SRecordRun>& runs) : m_runs(runs) {}
    bool Takes(std::uint32_t record) {
        while (m_at < m_runs.size() && record - m_runs[m_at].first >= m_runs[m_at].count &&
               record >= m_runs[m_at].first) {
            ++m_at;
        }
        return m_at < m_runs.size() && record >= m_runs[m_at].first;
    }

private:
    const std::vector<SRecordRun>& m_runs;
    std::size_t m_at = 0;
};

CTextFileHeader HeaderFor(std::uint32_t lastExtended) {
    return MakeEventListHeader(lastExtended + 1, kEventListText);
}

} // namespace

/// One visit as the journal tells of it.
struct CEntryRecovery::SEntry {
    std::uint32_t visit = 0;
    std::uint64_t offset = 0; ///< of its first frame
    SVisitInfo info;
    SChain chain;
    std::uint32_t records = 0;
    std::uint32_t lastExtended = 0;
    std::uint32_t lost = 0;
    std::optional<SStoreInfo> store;
    bool isDone = false;
};

/// What is to be written, and where.
struct CEntryRecovery::SPlan {
    SStoreInfo store;
    bool stands = false;      ///< all of it is in the file already
    bool isInPlace = false;   ///< over what is torn
    bool isElsewhere = false; ///< at the end: the file is no longer as it was
};

std::vector<std::string> JournalsIn(const std::string& folder) {
    std::vector<SFolderEntry> entries;
    std::vector<std::string> journals;
    if (!folder.empty() && ListFolder(folder, entries)) {
        for (const SFolderEntry& entry : entries) {
            if (entry.isFile && entry.name.ends_with(kJournalEnding)) {
                journals.push_back(folder + "\\" + entry.name);
            }
        }
    }
    std::ranges::sort(journals);
    return journals;
}

bool CEntryRecovery::BringIn(const std::string& journalPath, CHeldDayFile* held) {
    if (!m_journal.OpenEnded(journalPath)) {
        return true; // its run lives
    }
    if (!m_journal.HasKnownHead()) {
        if (held == nullptr) {
            m_tell("Journal " + DisplayPath(journalPath) +
                   " was written by another version, or is not a journal. It is left unchanged.");
        }
        return true;
    }
    bool isWhole = true;
    bool isFree = true;
    bool isAllDone = true;
    for (SEntry& entry : ReadEntries(isWhole)) {
        const bool isMeant = held == nullptr || PathOf(entry) == held->Path();
        const bool isSettled = entry.isDone || (isMeant && Settle(entry, held));
        isFree = isFree && (isSettled || !isMeant);
        isAllDone = isAllDone && isSettled;
    }
    if (isAllDone && isWhole) {
        m_journal.Remove();
    } else if (!isWhole && held == nullptr) {
        m_tell("Journal " + DisplayPath(journalPath) +
               " is damaged. Its readable events have been stored; the journal is kept.");
    }
    return isFree;
}

std::vector<CEntryRecovery::SEntry> CEntryRecovery::ReadEntries(bool& isWhole) {
    std::vector<SEntry> entries;
    CFrameReader reader(m_journal.File(), kJournalHead.size());
    SFrame frame;
    bool isUnderstood = true;
    while (isUnderstood && reader.Next(frame)) {
        if (frame.kind == EFrame::Visit) {
            const auto info = UnpackVisit(frame.payload);
            isUnderstood = info.has_value();
            SEntry& entry = entries.emplace_back();
            entry.visit = frame.visit;
            entry.offset = frame.offset;
            entry.info = info.value_or(SVisitInfo{});
            entry.isDone = !info;
            continue;
        }
        SEntry& entry = *std::ranges::find(entries, frame.visit, &SEntry::visit); // the reader knows it
        if (frame.kind == EFrame::Record) {
            const auto record = UnpackRecord(frame.payload);
            isUnderstood = record.has_value();
            entry.records += isUnderstood ? 1 : 0;
            entry.lastExtended = std::max(entry.lastExtended, isUnderstood ? record->extendedNumber : 0);
        } else if (frame.kind == EFrame::Store) {
            entry.store = UnpackStore(frame.payload);
        }
        entry.lost += frame.kind == EFrame::Lost ? 1 : 0;
        entry.isDone = entry.isDone || frame.kind == EFrame::Done;
    }
    for (SEntry& entry : entries) {
        entry.chain = reader.Chains().at(entry.visit);
    }
    m_journal.SetEnd(reader.Offset());
    isWhole = isUnderstood && reader.IsTornAtMost();
    if (isWhole) { // so that nothing stands behind what is added
        static_cast<void>(m_journal.File().SetLength(m_journal.End()));
    }
    return entries;
}

std::string CEntryRecovery::PathOf(const SEntry& entry) const {
    return m_eventRoot + "\\" + entry.info.file;
}

template <class Action>
bool CEntryRecovery::ForEachImage(const SEntry& entry, Action action) {
    CFrameReader reader(m_journal.File(), entry.offset, entry.visit);
    std::uint32_t record = 0;
    for (SFrame frame; record < entry.records && reader.Next(frame);) {
        const auto payload = frame.kind == EFrame::Record ? UnpackRecord(frame.payload) : std::nullopt;
        if (payload && !action(record, payload->image)) {
            return false;
        }
        record += payload ? 1 : 0;
    }
    return record == entry.records;
}

bool CEntryRecovery::Settle(SEntry& entry, CHeldDayFile* held) {
    const std::string path = PathOf(entry);
    const std::size_t separator = entry.info.file.find('\\');
    if (separator == std::string::npos || !IsSafeName(entry.info.file.substr(0, separator)) ||
        !IsSafeName(entry.info.file.substr(separator + 1))) {
        TellWaits(entry, "its name leads out of the event root");
        return false;
    }
    CHeldDayFile own;
    if (entry.records > 0) {
        if (held == nullptr) {
            if (const auto failure = own.Hold(path)) {
                if (failure->cause != EFileCause::SharingViolation) {
                    TellWaits(entry, failure->why);
                }
                return false;
            }
            held = &own;
        }
        if (!Store(entry, *held)) {
            return false;
        }
    } else if (held == nullptr && entry.info.isFileMade) {
        RemoveEmptyDayFile(path, entry.info.isFolderMade);
    }
    if (entry.lost > 0) {
        m_tell(Counted(entry.lost, "event") + " taken from the relay, but not stored. Visit of " +
               entry.info.key + ", begun " + entry.info.begun + ", which was ended; day file " +
               DisplayPath(path) + ".");
    }
    return m_journal.Append(EFrame::Done, entry.visit, entry.chain, {}) && m_journal.Flush();
}

bool CEntryRecovery::Store(SEntry& entry, CHeldDayFile& file) {
    SPlan plan;
    if (!MakePlan(entry, file, plan)) {
        return false;
    }
    if (!plan.stands && plan.isElsewhere &&
        !m_journal.Append(EFrame::Store, entry.visit, entry.chain, Pack(plan.store))) {
        return false;
    }
    if (!m_journal.Flush()) { // it has to outlast what is written by it
        return false;
    }
    try {
        file.StartAt(plan.store.length, HeaderFor(plan.store.lastExtended));
        CSelection selection(plan.store.records);
        const bool isRead = plan.stands || ForEachImage(entry, [&](std::uint32_t record, Bytes image) {
                                if (selection.Takes(record)) {
                                    file.Add(image);
                                }
                                return true;
                            });
        file.Finish();
        if (!isRead) {
            TellWaits(entry, "its journal cannot be read");
            return false;
        }
    } catch (const CFileException& failure) {
        if (!plan.isInPlace) {
            file.CutBack();
        }
        TellWaits(entry, failure.what());
        return false;
    }
    TellStored(entry, file.Path(), plan.isElsewhere);
    return true;
}

bool CEntryRecovery::MakePlan(const SEntry& entry, CHeldDayFile& file, SPlan& plan) {
    plan.store =
        entry.store.value_or(SStoreInfo{entry.info.length, entry.lastExtended, {{0, entry.records}}});
    const std::uint64_t length = file.LengthNow();
    CStandingBytes standing(file.File(), plan.store.length, length);
    bool isRead = true;
    if (plan.store.length == 0) {
        const std::string header = COffFile::HeaderBytes(HeaderFor(plan.store.lastExtended));
        isRead = standing.Compare({reinterpret_cast<const std::uint8_t*>(header.data()), header.size()});
    }
    CSelection selection(plan.store.records);
    isRead = isRead && ForEachImage(entry, [&](std::uint32_t record, Bytes image) {
                 return !selection.Takes(record) || standing.Compare(image);
             });
    if (!isRead) {
        TellWaits(entry, "its journal or its day file cannot be read");
        return false;
    }
    const EStanding outcome = standing.Outcome();
    plan.stands = outcome == EStanding::All;
    plan.isInPlace = outcome == EStanding::Torn;
    if (outcome != EStanding::Other) {
        return true;
    }
    if (FindTornEnd(file.Path())) {
        TellWaits(entry, "the file does not end with a whole record");
        return false;
    }
    plan.isElsewhere = true;
    return FindMissing(entry, file.Path(), plan) && (plan.store.length = length, true);
}

/// The records that stand in the file, whole and in order, count as stored.
bool CEntryRecovery::FindMissing(const SEntry& entry, const std::string& path, SPlan& plan) {
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> standing;
    CDayFileReader reader;
    if (!reader.Open(path, {.read = true, .plain = true}).Good()) {
        TellWaits(entry, "the file cannot be read");
        return false;
    }
    std::size_t number = 0;
    for (SDayFileItem item; reader.Next(item);) {
        if (item.record != nullptr && item.offset >= plan.store.length) {
            standing[DigestOf(item.bytes)].push_back(number++);
        }
    }
    std::vector<SRecordRun> missing;
    std::size_t next = 0; // the first of those that may still be found
    CSelection selection(plan.store.records);
    const bool isRead = ForEachImage(entry, [&](std::uint32_t record, Bytes image) {
        if (!selection.Takes(record)) {
            return true;
        }
        const auto alike = standing.find(DigestOf(image));
        const auto found = alike == standing.end() ? std::vector<std::size_t>::iterator()
                                                   : std::ranges::lower_bound(alike->second, next);
        if (alike == standing.end() || found == alike->second.end()) {
            AddToRuns(missing, record);
        } else {
            next = *found + 1;
        }
        return true;
    });
    plan.store.records = std::move(missing);
    plan.stands = plan.store.records.empty();
    return isRead;
}

void CEntryRecovery::TellStored(const SEntry& entry, const std::string& path, bool isElsewhere) const {
    m_tell(Counted(entry.records, "event") + " of a visit that was ended " +
           (entry.records == 1 ? "is" : "are") + " in day file " + DisplayPath(path) + " now. Visit of " +
           entry.info.key + ", begun " + entry.info.begun + "." +
           (isElsewhere ? " The file had changed since then; the missing events are at its end." : ""));
}

void CEntryRecovery::TellWaits(const SEntry& entry, const std::string& why) const {
    m_tell(Counted(entry.records, "event") + (entry.records == 1 ? " waits" : " wait") + " in journal " +
           DisplayPath(m_journal.Path()) + " for day file " + DisplayPath(PathOf(entry)) + ": " + why + ".");
}

} // namespace ruvo
