// Texts of a substation file (UTF-8) as a relay holds them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo::sim {

/// Code page 1252; none when a character has no place in it or the text is no UTF-8.
std::optional<std::string> Utf8ToCp1252(std::string_view text);

/// Bytes of the relay's own character set; none when it lacks a character of the text.
std::optional<std::vector<std::uint8_t>> EncodeRelayText(std::string_view utf8);

/// The text without the white space at its end, which counts neither in a user's name nor in the password.
std::string WithoutTrailingBlanks(std::string_view text);

} // namespace ruvo::sim
