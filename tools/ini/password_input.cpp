#include "tools/ini/password_input.h"

#include "base/secret.h"
#include "base/text.h"
#include "platform/terminal.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace ruvo {

namespace {

constexpr Mistake kNotTheSame = "the passwords do not match";
constexpr Mistake kTooLong = "the password has more than 8 characters";
constexpr Mistake kControls = "a password cannot contain control characters";
constexpr Mistake kBeyondAscii = "a relay password can contain only ASCII characters";

/// Long enough to detect a line that is too long.
constexpr std::size_t kLongestLine = kLongestHiddenLine;

bool IsBeyondAscii(char c) {
    return static_cast<unsigned char>(c) > 0x7F;
}

bool ReadPipedLine(std::istream& in, std::string& line) {
    line.reserve(kLongestLine + 1); // growing would leave copies in memory
    char c = '\0';
    bool isRead = false;
    while (line.size() <= kLongestLine && in.get(c)) {
        isRead = true;
        if (c == '\n') {
            break;
        }
        line += c;
    }
    WipeBytes(&c, 1);
    if (line.ends_with('\r')) { // a file written on Windows
        line.pop_back();
    }
    return isRead;
}

} // namespace

bool ReadSecret(SConsole& console, std::string_view prompt, std::string& line) {
    if (!console.inIsTerminal) {
        return ReadPipedLine(console.in, line);
    }
    console.error.Flush(); // the terminal is written to directly
    console.out.Flush();
    std::optional<std::string> typed = ReadHiddenLine(prompt);
    if (typed) {
        line = std::move(*typed); // the buffer moves, and nothing is copied
    }
    return typed.has_value();
}

Mistake ReadPassword(SConsole& console, std::string_view prompt, std::string& password) {
    if (!ReadSecret(console, prompt, password)) {
        return kNoInput;
    }
    if (console.inIsTerminal) {
        std::string again;
        const CWipeAtScopeEnd wipe(again);
        if (!ReadSecret(console, "Password again: ", again)) {
            return kNoInput;
        }
        if (again != password) {
            return kNotTheSame;
        }
    }
    if (password.size() > kMaxPasswordLength) {
        return kTooLong;
    }
    return std::ranges::any_of(password, IsControlCharacter) ? kControls : Mistake();
}

Mistake ReadScrambled(SConsole& console, std::string_view prompt, EPasswordBytes bytes,
                      std::string& scrambled) {
    std::string password;
    const CWipeAtScopeEnd wipe(password);
    if (const Mistake mistake = ReadPassword(console, prompt, password); !mistake.empty()) {
        return mistake;
    }
    if (bytes == EPasswordBytes::Ascii && std::ranges::any_of(password, IsBeyondAscii)) {
        return kBeyondAscii;
    }
    std::array<char, kScrambledLength + 1> text{};
    if (ScramblePassword(password.c_str(), text.data()) != 0) {
        return kTooLong;
    }
    scrambled = text.data();
    return {};
}

} // namespace ruvo
