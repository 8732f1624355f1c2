// Selects records by time, relay and text.
#pragma once

#include "model/records/event_record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ruvo {

/// A moment as one number that grows with it; made of a stamp's fields as they are, so that it also orders
/// stamps that name no real date.
using TimeKey = std::uint64_t;
[[nodiscard]] TimeKey TimeKeyOf(const CParlaneIEC870& time);
/// The fields that it was made of.
[[nodiscard]] STimeFields FieldsOf(TimeKey key);

/// Which moment a text means that leaves the time of day out.
enum class EDayEdge : bool { Start, End };
/// "2026-11-16", or with "T" or a blank and "03:12", "03:12:45" or "03:12:45.123"; none for anything else.
[[nodiscard]] std::optional<TimeKey> ParseTimeKey(std::string_view text, EDayEdge edge);

struct SEventFilter {
    std::optional<TimeKey> since; ///< that moment or later
    std::optional<TimeKey> until; ///< that moment or earlier
    std::string sinceText;        ///< the same as dates or times; empty for none
    std::string untilText;
    std::string relay; ///< UTF-8; as CRelaySelection takes it; empty for all
    std::string match; ///< UTF-8; part of one of the record's texts; empty for all

    [[nodiscard]] bool MatchesRecord(const CEventRecord& record) const;
};

} // namespace ruvo
