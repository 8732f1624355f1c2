#include "config/scramble.h"

#include "base/secret.h"
#include "base/tea.h"
#include "base/text.h"
#include "config/scramble_keys.h"
#include "platform/clock.h"
#include "platform/debug_output.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace ruvo {

namespace {

// The text: the key's index and the password's length as one hexadecimal digit each, then the two words of
// the enciphered block as ten decimal digits each.
constexpr std::size_t kWordDigits = 10;
constexpr std::size_t kFirstWordAt = 2;
constexpr std::size_t kSecondWordAt = kFirstWordAt + kWordDigits;
static_assert(kSecondWordAt + kWordDigits == kScrambledLength);

using Block = std::array<std::uint8_t, kMaxPasswordLength>;

// Any character that is no hexadecimal digit counts as 0.
unsigned DigitOrZero(char digit) {
    return static_cast<unsigned>(std::max(HexDigitValue(digit), 0));
}

// The digits up to the first other character, modulo 2^32.
std::uint32_t WordValue(std::string_view digits) {
    std::uint32_t value = 0;
    for (const char digit : digits.substr(0, digits.find_first_not_of("0123456789"))) {
        value = value * 10 + static_cast<std::uint32_t>(digit - '0');
    }
    return value;
}

TeaKey KeyOfIndex(unsigned index) {
    TeaKey key{};
    const std::uint8_t* const bytes = &kScrambleKeys[std::size_t{index} * kScrambleKeySize];
    for (std::size_t i = 0; i < kScrambleKeySize; ++i) {
        key[i / 4] |= std::uint32_t{bytes[i]} << (8 * (i % 4)); // least significant byte first
    }
    return key;
}

STeaBlock ToWords(const Block& bytes) {
    STeaBlock words;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::uint32_t& word = i < 4 ? words.first : words.second;
        word = (word << 8U) | bytes[i]; // most significant byte first
    }
    return words;
}

Block ToBytes(const STeaBlock& words) {
    Block bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::uint32_t word = i < 4 ? words.first : words.second;
        bytes[i] = static_cast<std::uint8_t>(word >> (24 - 8 * (i % 4)));
    }
    return bytes;
}

// The C library's generator and this seed are part of the format's habits: one text per password and second.
unsigned DrawKeyIndex() {
    std::srand(static_cast<unsigned>(UnixSeconds()));
    return static_cast<unsigned>(std::rand()) % static_cast<unsigned>(kScrambleKeyCount);
}

bool IsWord(std::string_view digits) {
    std::uint32_t word = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), word);
    return result.ec == std::errc() && result.ptr == digits.data() + digits.size();
}

} // namespace

int ScramblePassword(const char* plain, char* out23) {
    WriteDebugOutput("ttt2Debug");
    if (plain == nullptr || out23 == nullptr) {
        return -1;
    }
    const std::string_view password(plain);
    if (password.size() > kMaxPasswordLength) {
        return -1;
    }
    Block bytes{};
    const CWipeValueAtScopeEnd wipeBytes(bytes);
    std::copy(password.begin(), password.end(), bytes.begin());
    STeaBlock clear = ToWords(bytes);
    const CWipeValueAtScopeEnd wipeClear(clear);
    const unsigned index = DrawKeyIndex();
    const STeaBlock words = TeaEncipher(clear, KeyOfIndex(index));
    std::snprintf(out23, kScrambledLength + 1, "%X%X%.10" PRIu32 "%.10" PRIu32, index,
                  static_cast<unsigned>(password.size()), words.first, words.second);
    return 0;
}

int UnscramblePassword(const char* text, char* out9) {
    if (text == nullptr || out9 == nullptr) {
        return -1;
    }
    const std::string_view scrambled(text);
    if (scrambled.size() < kScrambledLength) {
        return -1;
    }
    const unsigned length = DigitOrZero(scrambled[1]);
    if (length > kMaxPasswordLength) {
        return -1;
    }
    const STeaBlock words{WordValue(scrambled.substr(kFirstWordAt, kWordDigits)),
                          WordValue(scrambled.substr(kSecondWordAt, kWordDigits))};
    STeaBlock clear = TeaDecipher(words, KeyOfIndex(DigitOrZero(scrambled[0])));
    const CWipeValueAtScopeEnd wipeClear(clear);
    Block bytes = ToBytes(clear);
    const CWipeValueAtScopeEnd wipeBytes(bytes);
    *std::copy_n(bytes.begin(), length, out9) = '\0';
    return 0;
}

bool IsScrambledText(std::string_view text) {
    return text.size() == kScrambledLength && HexDigitValue(text[0]) >= 0 && text[1] >= '0' &&
           text[1] <= '8' && IsWord(text.substr(2, 10)) && IsWord(text.substr(12, 10));
}

} // namespace ruvo
