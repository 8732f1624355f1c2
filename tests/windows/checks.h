// Checks that count and tell, for test programs that run where no test library is.
#pragma once

#include "support/hex.h"

#include <cstdio>
#include <string>
#include <type_traits>

namespace ruvo::test {

/// Counts passed and failed checks; a failed one says what it was about.
class CChecks {
public:
    void Expect(bool good, const std::string& about) {
        ++(good ? m_passed : m_failed);
        if (!good && m_failed <= kMostShown) {
            std::printf("FAILED: %s\n", about.c_str());
            std::fflush(stdout);
        }
    }

    template <typename TGot, typename TWanted>
    void Equal(const TGot& got, const TWanted& wanted, const std::string& about) {
        Expect(got == wanted, about + "\n  got    '" + Shown(got) + "'\n  wanted '" + Shown(wanted) + "'");
    }

    /// Prints the count, in the form that scripts add up; the exit status.
    int Finish() const {
        std::printf("%u passed, %u failed\n", m_passed, m_failed);
        return m_failed == 0 && m_passed > 0 ? 0 : 1;
    }

    /// The text with what cannot be printed as \xHH.
    static std::string Shown(const std::string& text) {
        std::string shown;
        for (const char c : text)
            shown += c >= ' ' && c <= '~' ? std::string(1, c) : "\\x" + HexDigits(std::string(1, c));
        return shown.size() > kLongest ? shown.substr(0, kLongest) + "..." : shown;
    }

private:
    static std::string Shown(const char* text) { return Shown(std::string(text)); }
    template <typename TNumber>
    static std::string Shown(TNumber number) requires(std::is_arithmetic_v<TNumber>) {
        return std::to_string(number);
    }

    static constexpr unsigned kMostShown = 40;
    static constexpr std::size_t kLongest = 2000;

    unsigned m_passed = 0;
    unsigned m_failed = 0;
};

} // namespace ruvo::test
