#include "platform/clock.h"

#include "platform/windows/system.h"

#include <ctime>

namespace ruvo {

namespace {

SCalendarTime FromFields(const SYSTEMTIME& fields) {
    return {fields.wYear, fields.wMonth, fields.wDay, fields.wHour, fields.wMinute, fields.wSecond};
}

} // namespace

std::int64_t UnixSeconds() {
    return std::time(nullptr);
}

std::optional<SCalendarTime> LocalTime() {
    SYSTEMTIME fields = {};
    GetLocalTime(&fields);
    return FromFields(fields);
}

SCalendarTime UtcTime() {
    SYSTEMTIME fields = {};
    GetSystemTime(&fields);
    return FromFields(fields);
}

bool IsDaylightTime() {
    TIME_ZONE_INFORMATION zone = {};
    return GetTimeZoneInformation(&zone) == TIME_ZONE_ID_DAYLIGHT;
}

} // namespace ruvo
