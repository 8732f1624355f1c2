#include "base/code_page.h"

#include "base/text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

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

void AppendUtf8(std::string& text, char32_t point) {
    const auto follow = [&](unsigned shift) { text += static_cast<char>(0x80 | ((point >> shift) & 0x3F)); };
    if (point < 0x80) {
        text += static_cast<char>(point);
    } else if (point < 0x800) {
        text += static_cast<char>(0xC0 | (point >> 6));
        follow(0);
    } else if (point < 0x10000) {
        text += static_cast<char>(0xE0 | (point >> 12));
        follow(6);
        follow(0);
    } else {
        text += static_cast<char>(0xF0 | (point >> 18));
        follow(12);
        follow(6);
        follow(0);
    }
}

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

/// First byte of U+0080 to U+00BF in UTF-8; the ones up to U+009F are control characters.
constexpr unsigned char kLatin1Lead = 0xC2;
constexpr unsigned char kLastC1Trail = 0x9F;

unsigned char ByteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

/// Length of the well-formed UTF-8 character that begins there; 0 when none does.
std::size_t CharacterSize(std::string_view text, std::size_t at) {
    struct SRow {
        unsigned char first;
        unsigned char last;
        std::size_t size;
        unsigned char
            secondFirst; ///< the second byte's range keeps out surrogates and forms that are too long
        unsigned char secondLast;
    };
    static constexpr std::array kRows{SRow{0xC2, 0xDF, 2, 0x80, 0xBF}, SRow{0xE0, 0xE0, 3, 0xA0, 0xBF},
                                      SRow{0xE1, 0xEC, 3, 0x80, 0xBF}, SRow{0xED, 0xED, 3, 0x80, 0x9F},
                                      SRow{0xEE, 0xEF, 3, 0x80, 0xBF}, SRow{0xF0, 0xF0, 4, 0x90, 0xBF},
                                      SRow{0xF1, 0xF3, 4, 0x80, 0xBF}, SRow{0xF4, 0xF4, 4, 0x80, 0x8F}};
    const unsigned char lead = ByteAt(text, at);
    if (lead < kFirstSpecial) {
        return 1;
    }
    const auto* const row =
        std::ranges::find_if(kRows, [lead](const SRow& r) { return lead >= r.first && lead <= r.last; });
    if (row == kRows.end() || text.size() - at < row->size) {
        return 0;
    }
    for (std::size_t i = 1; i < row->size; ++i) {
        const unsigned char byte = ByteAt(text, at + i);
        const unsigned char first = i == 1 ? row->secondFirst : 0x80;
        const unsigned char last = i == 1 ? row->secondLast : 0xBF;
        if (byte < first || byte > last) {
            return 0;
        }
    }
    return row->size;
}

/// Of the well-formed character of that size.
char32_t CodePointAt(std::string_view text, std::size_t at, std::size_t size) {
    char32_t point = size == 1 ? ByteAt(text, at) : ByteAt(text, at) & (0x7FU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        point = point << 6 | (ByteAt(text, at + i) & 0x3FU);
    }
    return point;
}

/// The length of the ASCII text from there on, in whole groups of bytes that are looked at together.
std::size_t AsciiSize(std::string_view text, std::size_t at) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080U;
    std::uint64_t group = 0;
    std::size_t end = at;
    for (; text.size() - end >= sizeof group; end += sizeof group) {
        std::memcpy(&group, text.data() + end, sizeof group);
        if ((group & kHighBits) != 0) {
            break;
        }
    }
    return end - at;
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

std::string Utf16ToUtf8(std::string_view bytes) {
    const auto unitAt = [&](std::size_t at) -> char32_t {
        return at + 1 < bytes.size()
                   ? static_cast<unsigned char>(bytes[at]) |
                         static_cast<char32_t>(static_cast<unsigned char>(bytes[at + 1])) << 8
                   : kNoCharacter;
    };
    std::string converted;
    converted.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        const char32_t unit = unitAt(at);
        if (IsHighSurrogate(unit) && IsLowSurrogate(unitAt(at + 2))) {
            at += 2;
            AppendUtf8(converted, 0x10000 + ((unit - 0xD800) << 10) + (unitAt(at) - 0xDC00));
        } else {
            AppendUtf8(converted, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kNoCharacter : unit);
        }
    }
    return converted;
}

std::string Utf8ToUtf16(std::string_view utf8) {
    std::string converted;
    converted.reserve(utf8.size() * 2);
    const auto append = [&converted](char32_t unit) {
        converted += static_cast<char>(unit & 0xFF);
        converted += static_cast<char>(unit >> 8);
    };
    for (std::size_t at = 0; at < utf8.size();) {
        const std::size_t size = CharacterSize(utf8, at);
        const char32_t point = size == 0 ? kNoCharacter : CodePointAt(utf8, at, size);
        if (point < 0x10000) {
            append(point);
        } else {
            append(0xD800 + ((point - 0x10000) >> 10));
            append(0xDC00 + (point & 0x3FF));
        }
        at += std::max(size, std::size_t{1});
    }
    return converted;
}

bool IsUtf8(std::string_view text) {
    for (std::size_t at = AsciiSize(text, 0); at < text.size(); at += AsciiSize(text, at)) {
        const std::size_t size = CharacterSize(text, at);
        if (size == 0) {
            return false;
        }
        at += size;
    }
    return true;
}

std::string SystemTextToUtf8(std::string_view text) {
    return IsUtf8(text) ? std::string(text) : Cp1252ToUtf8(text);
}

bool IsUtf8ControlAt(std::string_view utf8, std::size_t at, unsigned& code, std::size_t& size) {
    code = ByteAt(utf8, at);
    size = 1;
    if (code == kLatin1Lead && at + 1 < utf8.size() && ByteAt(utf8, at + 1) <= kLastC1Trail) {
        code = ByteAt(utf8, at + 1);
        size = 2;
        return true;
    }
    return IsControlCharacter(utf8[at]);
}

} // namespace ruvo
