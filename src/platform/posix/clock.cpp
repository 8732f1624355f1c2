#include "platform/clock.h"

#include <ctime>

namespace ruvo {

namespace {

SCalendarTime FromFields(const std::tm& fields) {
    return {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday,
            fields.tm_hour,        fields.tm_min,     fields.tm_sec};
}

std::optional<std::tm> LocalFields() {
    const std::time_t now = std::time(nullptr);
    std::tm fields = {};
    tzset(); // localtime_r need not look at a changed time zone itself
    if (localtime_r(&now, &fields) == nullptr) {
        return std::nullopt;
    }
    return fields;
}

} // namespace

std::int64_t UnixSeconds() {
    return std::time(nullptr);
}

std::optional<SCalendarTime> LocalTime() {
    const auto fields = LocalFields();
    return fields ? std::optional(FromFields(*fields)) : std::nullopt;
}

SCalendarTime UtcTime() {
    const std::time_t now = std::time(nullptr);
    std::tm fields = {};
    gmtime_r(&now, &fields);
    return FromFields(fields);
}

bool IsDaylightTime() {
    const auto fields = LocalFields();
    return fields && fields->tm_isdst > 0;
}

} // namespace ruvo
