// The system's time zone, with its changes of the clock.
#pragma once

#include "platform/clock.h"

#include <cstdint>
#include <optional>

namespace ruvo {

/// The local time at a moment, in seconds since 1970-01-01 00:00 UTC; none when it cannot be represented.
std::optional<SCalendarTime> LocalTimeAt(std::int64_t unixSeconds);

} // namespace ruvo
