// Units of decimal numbers. The code is an index that travels on the wire: never renumber.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace ruvo {

struct SUnitRow {
    std::string_view name;
    bool takesPrefix; ///< shown with an SI prefix ("kV")
};

inline constexpr std::array<SUnitRow, 34> kUnits{{
    {"A", true},    {"V", true},      {"deg", true}, {"Ohm", true},  {"W", true},    {"VA", true},
    {"VAr", true},  {"m", true},      {"s", true},   {":1", false},  {"Cel", true},  {"Hz", true},
    {"%", false},   {"PU", false},    {"A2", true},  {"", false},    {"Wh", true},   {"VAh", true},
    {"VArh", true}, {"min", true},    {"S", true},   {"V/Hz", true}, {"Hz/s", true}, {"mi", true},
    {"ft", false},  {"in", false},    {"hr", false}, {"d", false},   {"j", false},   {"A2s", false},
    {"m/s", false}, {"rev/s", false}, {"K", false},  {"F", false},
}};

/// The code of a number without a unit.
inline constexpr std::uint8_t kNoUnit = 15;

/// The unit's name; empty for a code beyond the table.
constexpr std::string_view GetUnitName(std::uint8_t unit) {
    return unit < kUnits.size() ? kUnits[unit].name : std::string_view{};
}

constexpr bool UnitTakesPrefix(std::uint8_t unit) {
    return unit < kUnits.size() && kUnits[unit].takesPrefix;
}

} // namespace ruvo
