#include "tools/ini/ini_forms.h"

#include "config/scramble.h"

#include <charconv>
#include <cstdint>
#include <system_error>

namespace ruvo {

namespace {

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

bool IsWord(std::string_view digits) {
    std::uint32_t word = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), word);
    return result.ec == std::errc() && result.ptr == digits.data() + digits.size();
}

} // namespace

bool CanBeScrambled(std::string_view text) {
    return text.size() == kScrambledLength && IsHexDigit(text[0]) && text[1] >= '0' && text[1] <= '8' &&
           IsWord(text.substr(2, 10)) && IsWord(text.substr(12, 10));
}

} // namespace ruvo
