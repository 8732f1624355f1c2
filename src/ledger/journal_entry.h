// One visit as a journal describes it. Nothing in a journal is trusted.
#pragma once

#include "ledger/frames.h"

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ruvo {

struct SJournalEntry {
    std::uint32_t visit = 0;
    std::uint64_t offset = 0; ///< of its first frame
    SVisitInfo info;
    SChain chain;
    std::uint32_t records = 0;
    std::uint32_t lastExtended = 0;
    std::array<std::uint32_t, kLostCauses> lost{}; ///< by cause
    std::optional<SStoreInfo> store;               ///< the last one
    std::optional<SSetAsideInfo> setAside;         ///< likewise
    std::set<std::string> waits;                   ///< the dates of runs that have found it waiting
    bool isDone = false;

    /// Whether it comes from a set-aside file that still has the records.
    [[nodiscard]] bool IsDropped() const { return !info.source.empty() && !store; }
    /// What was, or is, to be written into the day file.
    [[nodiscard]] SStoreInfo Wanted() const {
        return store.value_or(SStoreInfo{info.length, lastExtended, {{0, records}}});
    }
};

/// What could be read of a journal.
struct SJournalContents {
    std::vector<SJournalEntry> entries;
    std::uint64_t end = 0; ///< after the last whole frame that makes sense
    bool isRead = true;    ///< else what follows the entries is not known
    bool isWhole = true;   ///< but for a frame that an end has torn
};
[[nodiscard]] SJournalContents ReadJournal(CFile& journal);

/// Says of one record after the other whether it is in the runs.
class CSelection {
public:
    explicit CSelection(const std::vector<SRecordRun>& runs) : m_runs(runs) {}
    [[nodiscard]] bool Takes(std::uint32_t record);

private:
    const std::vector<SRecordRun>& m_runs;
    std::size_t m_at = 0;
};

/// Hands the images of the selected records to `action` (bool(std::uint32_t record, std::span image)), as
/// long as that returns true. True when all have been handed over.
template <class Action>
[[nodiscard]] bool ForEachImage(CFile& journal, const SJournalEntry& entry,
                                const std::vector<SRecordRun>& selected, Action action) {
    CFrameReader reader(journal, entry.offset, entry.visit);
    CSelection selection(selected);
    std::uint32_t record = 0;
    for (SFrame frame; record < entry.records && reader.Next(frame);) {
        const auto payload = frame.kind == EFrame::Record ? UnpackRecord(frame.payload) : std::nullopt;
        if (payload && selection.Takes(record) && !action(record, payload->image)) {
            return false;
        }
        record += payload ? 1 : 0;
    }
    return record == entry.records;
}

} // namespace ruvo
