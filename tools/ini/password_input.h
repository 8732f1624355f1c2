// Passwords on their way from a person or a pipe to their scrambled form. They are never arguments, since
// other users see the arguments of a program.
#pragma once

#include "config/scramble.h"
#include "tools/text_output.h"

#include <string>
#include <string_view>

namespace ruvo {

/// What is wrong, for people; an empty text stands for nothing. None of them may repeat what was typed.
using Mistake = std::string_view;

inline constexpr Mistake kNoInput = "nothing was entered";

/// One line: typed after the prompt without being shown, or of the standard input where that is no terminal.
/// The caller wipes it. False when there is none.
bool ReadSecret(SConsole& console, std::string_view prompt, std::string& line);

/// A password of 0 to 8 characters, typed twice at a terminal: a person cannot see what was typed.
Mistake ReadPassword(SConsole& console, std::string_view prompt, std::string& password);

/// Which bytes a relay may be sent as its password.
enum class EPasswordBytes : bool {
    Any,   ///< whoever asks knows them
    Ascii, ///< a character beyond ASCII would reach the relay as other bytes than its keyboard gives
};
/// Reads a password and leaves its scrambled form.
Mistake ReadScrambled(SConsole& console, std::string_view prompt, EPasswordBytes bytes,
                      std::string& scrambled);

/// Scrambling tells the length in its second digit.
inline bool IsEmptyPassword(std::string_view scrambled) {
    return scrambled.size() == kScrambledLength && scrambled[1] == '0';
}

} // namespace ruvo
