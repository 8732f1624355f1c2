// The texts of the program's string table, by number, and the filling of their placeholders.
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace ruvo {

struct SStringRow {
    unsigned id;
    const char* text;
};

/// Every text in ascending order of its number.
std::span<const SStringRow> StringTable();

/// The text of a number; null when there is none.
const char* LoadStringText(unsigned id);
/// The text of a number; empty when there is none.
std::string_view StringTextOrEmpty(unsigned id);

/// Fills %1 to %9 with the arguments, an absent one with nothing; "%%" is "%". Arguments go in as they are.
std::string FormatPositional(std::string_view pattern, std::initializer_list<std::string_view> arguments);

} // namespace ruvo
