#include "tools/given_time.h"

#include "platform/time_zone.h"
#include "tools/events/event_filter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

namespace ruvo {

namespace {

using namespace std::chrono;

constexpr std::size_t kDateSize = 10;

/// A reading of a clock, as if it showed UTC.
sys_seconds Reading(const SCalendarTime& time) {
    const auto part = [](int number) { return static_cast<unsigned>(number); };
    return sys_days(year(time.year) / month(part(time.month)) / day(part(time.day))) + hours(time.hour) +
           minutes(time.minute) + seconds(time.second);
}

/// The local clock's reading at a moment.
sys_seconds LocalReading(sys_seconds moment) {
    const auto local = LocalTimeAt(moment.time_since_epoch().count());
    return local ? Reading(*local) : moment;
}

/// The first moment at which the local clock reads that much. A reading that a change of the clock leaves out
/// is reached by the change.
sys_seconds FirstMomentOf(sys_seconds reading) {
    const auto ahead = [](sys_seconds moment) { return LocalReading(moment) - moment; };
    const auto [least, most] = std::minmax({ahead(reading - days(1)), ahead(reading + days(1))});
    sys_seconds early = reading - most;
    sys_seconds late = reading - least;
    if (LocalReading(early) == reading) {
        return early;
    }
    while (late - early > seconds(1) && LocalReading(late) != reading) {
        const sys_seconds middle = early + (late - early) / 2;
        (LocalReading(middle) < reading ? early : late) = middle;
    }
    return late;
}

std::string DateText(sys_days date) {
    const year_month_day ymd(date);
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(ymd.year()),
                  static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()));
    return text.data();
}

/// Of digits, which have been checked.
int Number(std::string_view digits) {
    int number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

/// Of a date or time as ParseGivenTime returns it.
sys_seconds ReadingOf(std::string_view text) {
    const auto two = [text](std::size_t at) {
        return text.size() >= at + 2 ? Number(text.substr(at, 2)) : 0;
    };
    return Reading({Number(text.substr(0, 4)), two(5), two(8), two(11), two(14), two(17)});
}

sys_days Today() {
    return floor<days>(LocalReading(sys_seconds(seconds(NowSeconds()))));
}

} // namespace

std::optional<std::int64_t> ParseLength(std::string_view text) {
    constexpr int kMost = 100'000;
    constexpr std::array kUnits{std::pair('m', 60), std::pair('h', 3600), std::pair('d', 86'400)};
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [at, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || at + 1 != end || number < 0 || number > kMost) {
        return std::nullopt;
    }
    const auto* const unit = std::ranges::find(kUnits, *at, &std::pair<char, int>::first);
    return unit == kUnits.end() ? std::nullopt : std::optional(std::int64_t{number} * unit->second);
}

std::optional<std::string> ParseGivenTime(std::string_view text) {
    if (const auto length = ParseLength(text)) {
        return LocalTimeText(NowSeconds() - *length);
    }
    if (text == "today" || text == "yesterday") {
        return DateText(Today() - days(text == "today" ? 0 : 1));
    }
    if (!ParseTimeKey(text, EDayEdge::Start)) {
        return std::nullopt;
    }
    std::string time(text);
    std::ranges::replace(time, ' ', 'T');
    return time;
}

std::optional<SPeriod> ParsePeriod(std::string_view text) {
    const std::int64_t now = NowSeconds();
    if (const auto length = ParseLength(text)) {
        return SPeriod{now - *length, now + 1};
    }
    const auto time = ParseGivenTime(text);
    if (!time) {
        return std::nullopt;
    }
    const auto moment = [](sys_seconds reading) { return FirstMomentOf(reading).time_since_epoch().count(); };
    const sys_seconds reading = ReadingOf(*time);
    const std::int64_t begin = moment(reading);
    return SPeriod{begin, time->size() == kDateSize ? moment(reading + days(1)) : std::max(begin, now + 1)};
}

std::string LocalTimeText(std::int64_t unixSeconds) {
    const sys_seconds reading = LocalReading(sys_seconds(seconds(unixSeconds)));
    const sys_days date = floor<days>(reading);
    const hh_mm_ss time(reading - date);
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "T%02d:%02d:%02d", static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return DateText(date) + text.data();
}

std::string TimeForPeople(std::string time) {
    constexpr std::string_view kNoSeconds = ":00";
    constexpr std::size_t kToSeconds = 19;
    std::ranges::replace(time, 'T', ' ');
    if (time.size() == kToSeconds && time.ends_with(kNoSeconds)) {
        time.resize(kToSeconds - kNoSeconds.size());
    }
    return time;
}

std::int64_t NowSeconds() {
    return Reading(UtcTime()).time_since_epoch().count();
}

std::optional<std::int64_t> DayNumber(std::string_view date) {
    if (date.size() != kDateSize || !ParseTimeKey(date, EDayEdge::Start)) {
        return std::nullopt;
    }
    return floor<days>(ReadingOf(date)).time_since_epoch().count();
}

} // namespace ruvo
