// Times and lengths of time as people give them: "24h", "7d", "yesterday", "2026-11-16", "2026-11-16 03:12".
// They are meant in this machine's local time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ruvo {

/// What a refusal of a text says after "expected".
inline constexpr std::string_view kTimeForms = "a date such as 2026-11-16, a time such as 2026-11-16T03:12, "
                                               "today, yesterday, or a length such as 24h or 7d";

/// Seconds of "10m", "36h" or "7d" (a day has 24 hours); none of anything else.
[[nodiscard]] std::optional<std::int64_t> ParseLength(std::string_view text);

/// The date "2026-11-16" or time "2026-11-16T03:12:45.123" that a text names, as exact as it was given. A
/// length is counted back from now. None for anything else.
[[nodiscard]] std::optional<std::string> ParseGivenTime(std::string_view text);

/// From a moment until before another, in Unix seconds.
struct SPeriod {
    std::int64_t begin = 0;
    std::int64_t end = 0;

    [[nodiscard]] bool Contains(std::int64_t moment) const { return moment >= begin && moment < end; }
};

/// The day that a text names, which may have 23 or 25 hours; after a time, and of a length, all until now.
/// None where ParseGivenTime takes the text for no time.
[[nodiscard]] std::optional<SPeriod> ParsePeriod(std::string_view text);

/// "2026-11-16T03:12:45", the local time at a moment.
[[nodiscard]] std::string LocalTimeText(std::int64_t unixSeconds);

/// "2026-11-16 03:12" of a date or time as ParseGivenTime has it; seconds and less only where there are some.
[[nodiscard]] std::string TimeForPeople(std::string time);

/// Now, in Unix seconds.
[[nodiscard]] std::int64_t NowSeconds();

/// Days from 1970-01-01 to a date "2026-11-16"; none if the text is not a date.
[[nodiscard]] std::optional<std::int64_t> DayNumber(std::string_view date);

} // namespace ruvo
