#include "ledger/journal_entry.h"

#include "ledger/journal_file.h"

#include <algorithm>

namespace ruvo {

namespace {

SJournalEntry Begin(const SFrame& frame) {
    const auto info = UnpackVisit(frame.payload);
    SJournalEntry entry;
    entry.visit = frame.visit;
    entry.offset = frame.offset;
    entry.info = info.value_or(SVisitInfo{});
    entry.isDone = !info;
    return entry;
}

/// False for a frame that makes no sense.
bool AddTo(SJournalEntry& entry, const SFrame& frame) {
    bool isUnderstood = true;
    if (frame.kind == EFrame::Record) {
        const auto record = UnpackRecord(frame.payload);
        isUnderstood = record.has_value();
        entry.records += isUnderstood ? 1 : 0;
        entry.lastExtended = std::max(entry.lastExtended, isUnderstood ? record->extendedNumber : 0);
    } else if (frame.kind == EFrame::Store) {
        auto store = UnpackStore(frame.payload);
        isUnderstood = store.has_value();
        if (isUnderstood) { // else the one before it still holds
            entry.store = std::move(store);
        }
    } else if (frame.kind == EFrame::SetAside) {
        entry.setAside = UnpackSetAside(frame.payload);
        isUnderstood = entry.setAside.has_value();
    } else if (frame.kind == EFrame::Waits) {
        entry.waits.emplace(frame.payload.begin(), frame.payload.end());
    } else if (frame.kind == EFrame::Lost) {
        const std::size_t cause = frame.payload.empty() ? 0 : frame.payload.front();
        ++entry.lost.at(cause < kLostCauses ? cause : 0);
    }
    entry.isDone = entry.isDone || frame.kind == EFrame::Done;
    return isUnderstood;
}

} // namespace

SJournalContents ReadJournal(CFile& journal) {
    SJournalContents contents;
    CFrameReader reader(journal, kJournalHead.size());
    bool isUnderstood = true;
    contents.end = reader.Offset();
    for (SFrame frame; isUnderstood && reader.Next(frame);) {
        if (frame.kind == EFrame::Visit) {
            contents.entries.push_back(Begin(frame));
            isUnderstood = !contents.entries.back().isDone;
        } else { // the reader knows its visit
            isUnderstood =
                AddTo(*std::ranges::find(contents.entries, frame.visit, &SJournalEntry::visit), frame);
        }
        contents.end = isUnderstood ? reader.Offset() : contents.end; // else its copy would be damaged, too
    }
    for (SJournalEntry& entry : contents.entries) {
        entry.chain = reader.Chains().at(entry.visit);
    }
    contents.isWhole = isUnderstood && reader.IsTornAtMost() && !reader.HasFailed();
    contents.isRead = !reader.HasFailed();
    return contents;
}

bool CSelection::Takes(std::uint32_t record) {
    while (m_at < m_runs.size() && record - m_runs[m_at].first >= m_runs[m_at].count &&
           record >= m_runs[m_at].first) {
        ++m_at;
    }
    return m_at < m_runs.size() && record >= m_runs[m_at].first;
}

} // namespace ruvo
