// The rules by which a clock's time becomes UTC: an offset, or a zone with summer time, as "CET-1CEST,M3.5.0,
// M10.5.0/3" writes it. Milliseconds are counted since 1970, those of a clock as if it showed UTC.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace ruvo {

/// A moment that a clock showed.
struct SMoment {
    std::int64_t utc = 0;
    /// The clock shows this time twice that night, or skips it: it may be an hour off.
    bool isDoubtful = false;
};

struct SShownTime {
    std::int64_t milliseconds = 0;
    bool isSummerTime = false;
};

class CZoneRule {
public:
    /// "UTC" or "Z"; an offset "+01:00", "-03:30", "+01:00:02.500"; or a zone by the rules of POSIX, without
    /// a date rule only where it has no summer time. None for anything else.
    [[nodiscard]] static std::optional<CZoneRule> Parse(std::string_view text);

    /// `summerFlag` is what the clock says of the time. It decides where the rule cannot; an offset alone is
    /// that of standard time, which the flag makes one hour more.
    [[nodiscard]] SMoment ToUtc(std::int64_t shown, bool summerFlag) const;
    [[nodiscard]] SShownTime FromUtc(std::int64_t utc) const;

private:
    enum class EDayForm : std::uint8_t { Weekday, DayWithoutLeap, Day };
    /// A day of each year, and a time on it.
    struct SChange {
        EDayForm form = EDayForm::Weekday;
        int month = 0;
        int week = 0;
        int day = 0;
        std::int64_t time = 0; ///< milliseconds from midnight
    };
    enum class ESummer : std::uint8_t { None, ByFlag, ByRule };

    static bool ParseChange(std::string_view& text, SChange& change);
    static bool ParseZone(std::string_view text, CZoneRule& rule);
    static std::int64_t MomentOf(const SChange& change, int year);
    [[nodiscard]] bool IsSecondAt(std::int64_t utc) const;

    ESummer m_summer = ESummer::None;
    /// What the clock shows more than UTC: usually, and between the first change and the second.
    std::array<std::int64_t, 2> m_offsets{};
    std::array<SChange, 2> m_changes;
};

} // namespace ruvo
