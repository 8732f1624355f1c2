// Bytes written out in a test.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo::test {

/// Pairs of hexadecimal digits; blanks between them do not count.
inline std::vector<std::uint8_t> Hex(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    std::string digits;
    for (const char character : text) {
        if (character == ' ') {
            continue;
        }
        digits += character;
        if (digits.size() == 2) {
            bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits, nullptr, 16)));
            digits.clear();
        }
    }
    return bytes;
}

} // namespace ruvo::test
