#include "tools/clocks/zone_rule.h"

#include "base/text.h"

#include <algorithm>
#include <chrono>

namespace ruvo {

namespace {

constexpr std::int64_t kSecond = 1000;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;
constexpr int kHoursOfOffset = 24;
constexpr int kHoursOfChange = 167; // within a week
constexpr int kLastDayOfYear = 365;

bool Take(std::string_view& text, char c) {
    const bool isThere = text.starts_with(c);
    text.remove_prefix(isThere ? 1 : 0);
    return isThere;
}

/// A number of one digit to three, within the bounds.
std::optional<int> TakeNumber(std::string_view& text, int low, int high) {
    int number = 0;
    std::size_t digits = 0;
    for (; digits < text.size() && digits < 3 && IsDigit(text[digits]); ++digits) {
        number = number * 10 + (text[digits] - '0');
    }
    text.remove_prefix(digits);
    return digits > 0 && number >= low && number <= high ? std::optional(number) : std::nullopt;
}

/// "1", "01:30", "01:30:15"; in milliseconds.
std::optional<std::int64_t> TakeTime(std::string_view& text, int mostHours) {
    const auto hours = TakeNumber(text, 0, mostHours);
    std::int64_t time = hours.value_or(0) * kHour;
    bool isGood = hours.has_value();
    for (const std::int64_t unit : {kMinute, kSecond}) {
        if (!isGood || !Take(text, ':')) {
            break;
        }
        const auto part = TakeNumber(text, 0, 59);
        isGood = part.has_value();
        time += part.value_or(0) * unit;
    }
    return isGood ? std::optional(time) : std::nullopt;
}

/// The same after a sign that may be missing.
std::optional<std::int64_t> TakeSignedTime(std::string_view& text, int mostHours) {
    const bool isNegative = Take(text, '-');
    if (!isNegative) {
        Take(text, '+');
    }
    const auto time = TakeTime(text, mostHours);
    return time && isNegative ? -*time : time;
}

/// "CET" or "<+03>".
bool TakeName(std::string_view& text) {
    constexpr std::size_t kShortestName = 3;
    const bool isQuoted = Take(text, '<');
    std::size_t size = 0;
    const auto isPart = [isQuoted](char c) {
        return IsLetter(c) || (isQuoted && (IsDigit(c) || c == '+' || c == '-'));
    };
    while (size < text.size() && isPart(text[size])) {
        ++size;
    }
    text.remove_prefix(size);
    return size >= kShortestName && (!isQuoted || Take(text, '>'));
}

/// "+01:00", "+01:00:02.500".
std::optional<std::int64_t> ParseOffset(std::string_view text) {
    const bool isNegative = text.starts_with('-');
    if (!isNegative && !text.starts_with('+')) {
        return std::nullopt;
    }
    text.remove_prefix(1);
    auto offset = TakeTime(text, kHoursOfOffset);
    if (offset && Take(text, '.')) {
        const std::size_t digits = text.size();
        auto fraction = TakeNumber(text, 0, 999);
        for (std::size_t missing = digits; fraction && missing < 3; ++missing) {
            *fraction *= 10;
        }
        offset = fraction ? std::optional(*offset + *fraction) : std::nullopt;
    }
    if (!offset || !text.empty()) {
        return std::nullopt;
    }
    return isNegative ? -*offset : *offset;
}

} // namespace

// "M3.5.0/2" is the last Sunday of March at 02:00, "J60" is 1 March in every year, "59" the 60th day of the
// year.
bool CZoneRule::ParseChange(std::string_view& text, SChange& change) {
    bool isGood = Take(text, ',');
    if (isGood && Take(text, 'M')) {
        const auto month = TakeNumber(text, 1, 12);
        const auto week = Take(text, '.') ? TakeNumber(text, 1, 5) : std::nullopt;
        const auto day = Take(text, '.') ? TakeNumber(text, 0, 6) : std::nullopt;
        isGood = month && week && day;
        change = {EDayForm::Weekday, month.value_or(1), week.value_or(1), day.value_or(0), 0};
    } else if (isGood) {
        const bool isWithoutLeap = Take(text, 'J');
        const auto day = TakeNumber(text, isWithoutLeap ? 1 : 0, kLastDayOfYear);
        isGood = day.has_value();
        change = {isWithoutLeap ? EDayForm::DayWithoutLeap : EDayForm::Day, 1, 1, day.value_or(0), 0};
    }
    constexpr std::int64_t kUsualTime = 2 * kHour;
    const auto time = Take(text, '/') ? TakeSignedTime(text, kHoursOfChange) : std::optional(kUsualTime);
    change.time = time.value_or(0);
    return isGood && time;
}

// Its offsets are what has to be added to the clock for UTC.
bool CZoneRule::ParseZone(std::string_view text, CZoneRule& rule) {
    if (!TakeName(text)) {
        return false;
    }
    const auto standard = TakeSignedTime(text, kHoursOfOffset);
    if (!standard) {
        return false;
    }
    rule.m_offsets = {-*standard, -*standard};
    if (text.empty()) {
        return true;
    }
    if (!TakeName(text)) {
        return false;
    }
    rule.m_summer = ESummer::ByRule;
    rule.m_offsets[1] = rule.m_offsets[0] + kHour;
    if (!text.starts_with(',')) {
        const auto summer = TakeSignedTime(text, kHoursOfOffset);
        if (!summer) {
            return false;
        }
        rule.m_offsets[1] = -*summer;
    }
    return ParseChange(text, rule.m_changes[0]) && ParseChange(text, rule.m_changes[1]) && text.empty();
}

std::optional<CZoneRule> CZoneRule::Parse(std::string_view text) {
    CZoneRule rule;
    if (text == "UTC" || text == "Z") {
        return rule;
    }
    if (const auto offset = ParseOffset(text)) {
        rule.m_summer = ESummer::ByFlag;
        rule.m_offsets = {*offset, *offset + kHour};
        return rule;
    }
    return ParseZone(text, rule) ? std::optional(rule) : std::nullopt;
}

/// As a clock shows it.
std::int64_t CZoneRule::MomentOf(const SChange& change, int year) {
    using namespace std::chrono;
    const std::chrono::year inYear(year);
    sys_days date = inYear / January / 1;
    if (change.form == EDayForm::Weekday) {
        const year_month month = inYear / std::chrono::month(static_cast<unsigned>(change.month));
        const weekday day(static_cast<unsigned>(change.day));
        constexpr int kLastWeek = 5;
        date = change.week == kLastWeek ? sys_days(month / day[last])
                                        : sys_days(month / day[static_cast<unsigned>(change.week)]);
    } else {
        constexpr int kLastOfFebruary = 59;
        const bool isBeforeLeapDay = change.form == EDayForm::Day || change.day <= kLastOfFebruary;
        date += days(change.day - (change.form == EDayForm::DayWithoutLeap ? 1 : 0) +
                     (!isBeforeLeapDay && inYear.is_leap() ? 1 : 0));
    }
    return date.time_since_epoch().count() * kDay + change.time;
}

bool CZoneRule::IsSecondAt(std::int64_t utc) const {
    using namespace std::chrono;
    const sys_days date = floor<days>(sys_time<milliseconds>(milliseconds(utc + m_offsets[0])));
    const int year = static_cast<int>(year_month_day(date).year());
    const std::int64_t begin = MomentOf(m_changes[0], year) - m_offsets[0];
    const std::int64_t end = MomentOf(m_changes[1], year) - m_offsets[1];
    return begin < end ? utc >= begin && utc < end : utc >= begin || utc < end;
}

SMoment CZoneRule::ToUtc(std::int64_t shown, bool summerFlag) const {
    if (m_summer != ESummer::ByRule) {
        return {shown - m_offsets[m_summer == ESummer::ByFlag && summerFlag ? 1 : 0], false};
    }
    const std::array<std::int64_t, 2> moments{shown - m_offsets[0], shown - m_offsets[1]};
    const std::array<bool, 2> isPossible{!IsSecondAt(moments[0]), IsSecondAt(moments[1])};
    const std::size_t summer =
        m_offsets[1] > m_offsets[0] ? 1 : 0; // a zone may name its winter as the exception
    if (summerFlag) {
        return {moments[summer], !isPossible[summer]};
    }
    if (isPossible[0] != isPossible[1]) {
        return {moments[isPossible[1] ? 1 : 0], false};
    }
    return {moments[1 - summer], true};
}

SShownTime CZoneRule::FromUtc(std::int64_t utc) const {
    const std::size_t offset = m_summer == ESummer::ByRule && IsSecondAt(utc) ? 1 : 0;
    const bool isSummerTime = m_summer == ESummer::ByRule && m_offsets[offset] > m_offsets[1 - offset];
    return {utc + m_offsets[offset], isSummerTime};
}

} // namespace ruvo
