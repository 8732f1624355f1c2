#include "dayfile/incomplete_records.h"

#include <algorithm>
#include <new>

namespace ruvo {

void CIncompleteRecords::Add(const CEventRecord& record, SDroppedItems dropped) noexcept {
    const auto known = std::ranges::find(m_kinds, dropped, &SIncompleteRecords::dropped);
    if (known != m_kinds.end()) {
        ++known->count;
        return;
    }
    try {
        if (m_kinds.size() < kMostKinds) {
            m_kinds.push_back({std::move(dropped), record.GetTimeStamp().ToFields(), 1});
            return;
        }
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): it is counted below
    }
    ++m_otherCount;
}

} // namespace ruvo
