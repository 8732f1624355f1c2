// Reads passwords from a terminal or a pipe and scrambles them. They are never arguments, because other users
// can see the arguments of a program.
#pragma once

#include "config/scramble.h"
#include "tools/text_output.h"

#include <string>
#include <string_view>

namespace ruvo {

/// A readable error; empty for none. It must never repeat what was typed.
using Mistake = std::string_view;

inline constexpr Mistake kNoInput = "nothing was entered";

/// Reads one line: after a prompt without echo, or from standard input if it is not a terminal. The caller
/// wipes it. False at the end of input.
bool ReadSecret(SConsole& console, std::string_view prompt, std::string& line);

/// Reads a password of 0 to 8 characters; at a terminal twice, because it is not echoed.
Mistake ReadPassword(SConsole& console, std::string_view prompt, std::string& password);

/// The bytes allowed in a password.
enum class EPasswordBytes : bool {
    Any,   ///< the caller takes care
    Ascii, ///< others would reach the relay as different bytes than its keypad enters
};
/// Reads a password and returns its scrambled form.
Mistake ReadScrambled(SConsole& console, std::string_view prompt, EPasswordBytes bytes,
                      std::string& scrambled);

/// The second digit of a scrambled password is its length.
inline bool IsEmptyPassword(std::string_view scrambled) {
    return scrambled.size() == kScrambledLength && scrambled[1] == '0';
}

} // namespace ruvo
