// When an entry has waited long enough to become a set-aside file. Clocks jump, so one reading is not
// trusted.
#pragma once

#include "platform/clock.h"

#include <set>
#include <string>

namespace ruvo {

/// "2026-11-16 23:30:00 UTC", as a visit frame says when the visit began.
[[nodiscard]] std::string UtcText(const SCalendarTime& time);
/// "2026-11-16".
[[nodiscard]] std::string UtcDateText(const SCalendarTime& time);

/// True when the visit began seven days ago or earlier, and runs of seven different dates have found it
/// waiting. So a visit whose own date was wrong waits seven dates nevertheless, and a clock that jumps ahead
/// for a night is one date more.
[[nodiscard]] bool HasWaitedForAWeek(const std::string& begun, const std::set<std::string>& dates,
                                     const SCalendarTime& now);

} // namespace ruvo
