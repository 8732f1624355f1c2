// The scrambled form of relay passwords in the INI file: key index and length as one hexadecimal
// digit each, then the two enciphered words of the password's 8-byte block as ten decimal digits each.
#pragma once

#include <cstddef>
#include <string_view>

namespace ruvo {

inline constexpr std::size_t kMaxPasswordLength = 8;
inline constexpr std::size_t kScrambledLength = 22;

/// Scrambles a password into 22 characters and a NUL (23 bytes). The key is drawn by a clock-seeded
/// generator: two calls within one second give one text. 0 on success; -1, with the output untouched, when
/// the password is null or longer than 8 characters or the output is null.
int ScramblePassword(const char* plain, char* out23);

/// Turns a scrambled text (what follows its first 22 characters is ignored) into the password and a NUL, at
/// most 9 bytes. 0 on success; -1, with the output untouched, when the text is null, shorter than 22
/// characters or has a length digit above 8, or the output is null.
int UnscramblePassword(const char* text, char* out9);

/// True for a text that scrambling can have written. Unscrambling takes more than that.
[[nodiscard]] bool IsScrambledText(std::string_view text);

} // namespace ruvo
