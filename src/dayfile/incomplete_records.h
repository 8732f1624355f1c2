// Which records were stored without an item that has no binary form, and how many, in bounded memory.
#pragma once

#include "model/records/event_record.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ruvo {

/// Records that lack the same items.
struct SIncompleteRecords {
    SDroppedItems dropped; ///< from each of them
    STimeFields firstTime; ///< event time of the first of them
    std::size_t count = 0;
};

/// Counts the records that lack items. A relay chooses what its records lack: once so many kinds of lack are
/// known, records with another one are only counted.
class CIncompleteRecords {
public:
    static constexpr std::size_t kMostKinds = 16;

    /// Never fails: without memory the record is only counted.
    void Add(const CEventRecord& record, SDroppedItems dropped) noexcept;

    /// In the order in which they first occurred.
    [[nodiscard]] const std::vector<SIncompleteRecords>& Kinds() const { return m_kinds; }
    [[nodiscard]] std::size_t OtherCount() const { return m_otherCount; }

private:
    std::vector<SIncompleteRecords> m_kinds;
    std::size_t m_otherCount = 0;
};

} // namespace ruvo
