#include "platform/code_page.h"

#include <array>
#include <cstdint>

namespace ruvo {

namespace {

constexpr char16_t kNoCharacter = 0xFFFD;
constexpr unsigned char kFirstSpecial = 0x80;

// The 32 bytes where the code page differs from Latin-1; every other byte is the code point of its own
// number.
constexpr std::array<char16_t, 32> kSpecials{
    0x20AC,       kNoCharacter, 0x201A, 0x0192, 0x201E, 0x2026,       0x2020, 0x2021,       // 80
    0x02C6,       0x2030,       0x0160, 0x2039, 0x0152, kNoCharacter, 0x017D, kNoCharacter, // 88
    kNoCharacter, 0x2018,       0x2019, 0x201C, 0x201D, 0x2022,       0x2013, 0x2014,       // 90
    0x02DC,       0x2122,       0x0161, 0x203A, 0x0153, kNoCharacter, 0x017E, 0x0178};      // 98

char16_t CodePoint(unsigned char byte) {
    const bool special = byte >= kFirstSpecial && byte < kFirstSpecial + kSpecials.size();
    return special ? kSpecials[byte - kFirstSpecial] : char16_t{byte};
}

// No character of the code page lies beyond the three-byte range.
void AppendUtf8(std::string& text, char16_t point) {
    if (point < 0x80) {
        text += static_cast<char>(point);
    } else if (point < 0x800) {
        text += static_cast<char>(0xC0 | (point >> 6));
        text += static_cast<char>(0x80 | (point & 0x3F));
    } else {
        text += static_cast<char>(0xE0 | (point >> 12));
        text += static_cast<char>(0x80 | ((point >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (point & 0x3F));
    }
}

} // namespace

std::string Cp1252ToUtf8(std::string_view text) {
    std::string converted;
    converted.reserve(text.size());
    for (const char c : text) {
        AppendUtf8(converted, CodePoint(static_cast<unsigned char>(c)));
    }
    return converted;
}

} // namespace ruvo
