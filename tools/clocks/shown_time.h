// When an event is shown to have happened: by its relay's clock, or lined up with the events of other relays.
#pragma once

#include "tools/clocks/zone_rule.h"
#include "tools/events/event_filter.h"
#include "tools/events/event_printer.h"

#include <cstdint>
#include <set>
#include <string>
#include <utility>

namespace ruvo {

struct SShownStamp {
    bool hasTime = false;    ///< else it names no real time, and has no place in an order
    std::int64_t moment = 0; ///< milliseconds since 1970: UTC, or what the relay's clock shows
    bool isDoubtful = false; ///< the moment may be an hour off, or the clock's zone is unknown
    CParlaneIEC870 time;     ///< with the flag of summer time
};

/// `clock` is what the relay's clock shows, null where that is not known; `zone` is the one to show all times
/// in, null to leave them as they are.
[[nodiscard]] SShownStamp ShowStamp(const CParlaneIEC870& relayTime, const CZoneRule* clock,
                                    const CZoneRule* zone);

/// Whether that stamp, which is shown, lies within the filter's bounds.
[[nodiscard]] bool IsWithin(const SEventFilter& filter, const CParlaneIEC870& shown);
/// The filter without its bounds.
[[nodiscard]] SEventFilter TextsOf(const SEventFilter& filter);

/// Relays that use the flag of summer time: without it, their times are standard time, whatever doubt the
/// zone leaves.
class CFlaggingRelays {
public:
    void Note(const SEventSource& source, const CParlaneIEC870& relayTime);
    /// Once all records have been noted.
    [[nodiscard]] bool Decide(const SEventSource& source, bool isFlagged) const;

private:
    std::set<std::pair<std::string, std::string>> m_relays; ///< site and name
};

} // namespace ruvo
