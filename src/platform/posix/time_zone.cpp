#include "platform/time_zone.h"

#include <ctime>

namespace ruvo {

std::optional<SCalendarTime> LocalTimeAt(std::int64_t unixSeconds) {
    const std::time_t moment = unixSeconds;
    std::tm fields = {};
    tzset(); // localtime_r need not look at a changed time zone itself
    if (localtime_r(&moment, &fields) == nullptr) {
        return std::nullopt;
    }
    return SCalendarTime{fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday,
                         fields.tm_hour,        fields.tm_min,     fields.tm_sec};
}

} // namespace ruvo
