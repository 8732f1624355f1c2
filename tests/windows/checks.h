// Checks that count and tell, for test programs that run where no test library is.
#pragma once

#include "support/hex.h"

#include <cstdio>
#include <string>
#include <type_traits>

namespace ruvo::test {

inline unsigned g_passed = 0, g_failed = 0;

/// Counts; a failed check says what it was about.
inline void Expect(bool good, const std::string& about) {
    constexpr unsigned kMostShown = 40;
    ++(good ? g_passed : g_failed);
    if (!good && g_failed <= kMostShown) {
        std::printf("FAILED: %s\n", about.c_str());
        std::fflush(stdout);
    }
}

/// The text with what cannot be printed as \xHH.
inline std::string Shown(const std::string& text) {
    constexpr std::size_t kLongest = 2000;
    std::string shown;
    for (const char c : text)
        shown += c >= ' ' && c <= '~' ? std::string(1, c) : "\\x" + HexDigits(std::string(1, c));
    return shown.size() > kLongest ? shown.substr(0, kLongest) + "..." : shown;
}

template <typename TNumber>
std::string Shown(TNumber number) requires(std::is_arithmetic_v<TNumber>) {
    return std::to_string(number);
}

template <typename TGot, typename TWanted>
void Equal(const TGot& got, const TWanted& wanted, const std::string& about) {
    Expect(got == wanted, about + "\n  got    '" + Shown(got) + "'\n  wanted '" + Shown(wanted) + "'");
}

/// Prints the count, in the form that scripts add up; the exit status.
inline int Finish() {
    std::printf("%u passed, %u failed\n", g_passed, g_failed);
    return g_failed == 0 && g_passed > 0 ? 0 : 1;
}

} // namespace ruvo::test
