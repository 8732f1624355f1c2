#include "platform/time_zone.h"

#include "platform/windows/system.h"

namespace ruvo {

std::optional<SCalendarTime> LocalTimeAt(std::int64_t unixSeconds) {
    constexpr std::int64_t kTicks = 10'000'000;                 // of a second
    constexpr std::int64_t kSecondsBefore1970 = 11'644'473'600; // since 1601
    constexpr std::int64_t kLast = 900'000'000'000;             // later ones have no calendar date
    if (unixSeconds < -kSecondsBefore1970 || unixSeconds > kLast) {
        return std::nullopt;
    }
    ULARGE_INTEGER ticks = {};
    ticks.QuadPart = static_cast<ULONGLONG>((unixSeconds + kSecondsBefore1970) * kTicks);
    const FILETIME moment = {ticks.LowPart, ticks.HighPart};
    SYSTEMTIME utc = {};
    SYSTEMTIME local = {};
    TIME_ZONE_INFORMATION zone = {}; // with the rules of the year in question
    if (FileTimeToSystemTime(&moment, &utc) == 0 ||
        GetTimeZoneInformationForYear(utc.wYear, nullptr, &zone) == 0 ||
        SystemTimeToTzSpecificLocalTime(&zone, &utc, &local) == 0) {
        return std::nullopt;
    }
    return SCalendarTime{local.wYear, local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond};
}

} // namespace ruvo
