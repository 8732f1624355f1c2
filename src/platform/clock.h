// Clock and time zone.
#pragma once

#include <cstdint>
#include <optional>

namespace ruvo {

/// A calendar date and time of day.
struct SCalendarTime {
    int year = 0;   ///< full year, 2026
    int month = 0;  ///< 1 to 12
    int day = 0;    ///< 1 to 31
    int hour = 0;   ///< 0 to 23
    int minute = 0; ///< 0 to 59
    int second = 0; ///< 0 to 60
};

/// Seconds since 1970-01-01 00:00 UTC.
std::int64_t UnixSeconds();
/// The current time in the system's time zone; none when it cannot be represented.
std::optional<SCalendarTime> LocalTime();
/// The current time in UTC.
SCalendarTime UtcTime();
/// True while the system's time zone observes daylight time.
bool IsDaylightTime();

} // namespace ruvo
