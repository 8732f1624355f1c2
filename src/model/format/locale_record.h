// The built-in language profiles: how numbers, dates and times are written. Names are bytes of the code page
// of their language (1252, Russian 1251). Nothing of the process's own locale is ever asked.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace ruvo {

enum class EDatePart : unsigned char { Day, Month, Year };

struct SLocale {
    std::string_view code;
    char decimalPoint;
    int floatPrecision;
    std::array<EDatePart, 3> dateOrder;
    bool showWeekday;
    bool longWeekdays;
    bool longMonths;
    bool showCentury;
    int yearNumber;                           ///< kept with the record; no text depends on it
    std::array<std::string_view, 7> weekdays; ///< Monday first
    std::array<std::string_view, 7> shortWeekdays;
    std::array<std::string_view, 12> months;
    std::array<std::string_view, 12> shortMonths;
    std::string_view dateCaption;
    std::string_view badTime;
    std::string_view invalid;
    bool clock24;
    bool showAmPm;
    std::string_view am;
    std::string_view pm;
    std::string_view standardTime;
    std::string_view summerTime;
    char timeSeparator;
    char fractionSeparator;
    std::string_view timeCaption;
};

/// 0 to 4 are "uk", "fr", "de", "es" and "ru"; any other index returns the fallback (English).
[[nodiscard]] const SLocale& GetLocale(std::size_t index);
/// By language code; any other code returns the fallback.
[[nodiscard]] const SLocale& GetLocaleByCode(std::string_view code);
/// The record of the process's current index, which is 0 from the start.
[[nodiscard]] const SLocale& GetCurrentLocale();
[[nodiscard]] const SLocale& GetFallbackLocale();

} // namespace ruvo
