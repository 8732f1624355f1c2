// Bytes written out in a test, and written for one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo::test {

/// Pairs of hexadecimal digits; blanks between them do not count.
inline std::vector<std::uint8_t> Hex(std::string_view text) {
    std::string digits(text);
    std::erase(digits, ' ');
    std::vector<std::uint8_t> bytes;
    for (std::size_t at = 0; at + 1 < digits.size(); at += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(at, 2), nullptr, 16)));
    return bytes;
}

/// Two hexadecimal digits for each element.
template <class Elements>
std::string HexDigits(const Elements& elements) {
    std::string digits;
    for (const auto element : elements)
        for (const int shift : {4, 0})
            digits += "0123456789ABCDEF"[(static_cast<unsigned>(element) >> shift) & 0x0F];
    return digits;
}

} // namespace ruvo::test
