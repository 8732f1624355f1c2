#include "ledger/waiting_time.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <optional>

namespace ruvo {

namespace {

using namespace std::chrono;

sys_seconds MomentOf(const SCalendarTime& time) {
    const auto part = [](int number) { return static_cast<unsigned>(number); };
    return sys_days(year(time.year) / month(part(time.month)) / day(part(time.day))) + hours(time.hour) +
           minutes(time.minute) + seconds(time.second);
}

std::optional<SCalendarTime> Parse(const std::string& text) {
    SCalendarTime time;
    constexpr int kParts = 6;
    const int found = std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d:%2d UTC", &time.year, &time.month,
                                  &time.day, &time.hour, &time.minute, &time.second);
    return found == kParts && UtcText(time) == text ? std::optional(time) : std::nullopt;
}

} // namespace

std::string UtcText(const SCalendarTime& time) {
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d UTC", time.year, time.month,
                  time.day, time.hour, time.minute, time.second);
    return text.data();
}

std::string UtcDateText(const SCalendarTime& time) {
    constexpr std::size_t kDateSize = 10;
    return UtcText(time).substr(0, kDateSize);
}

bool HasWaitedForAWeek(const std::string& begun, const std::set<std::string>& dates,
                       const SCalendarTime& now) {
    constexpr std::size_t kDates = 7;
    const auto begin = Parse(begun);
    return begin && dates.size() >= kDates && MomentOf(now) - MomentOf(*begin) >= days(kDates);
}

} // namespace ruvo
