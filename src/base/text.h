// Text helpers that know no operating system and no relay. Letters and digits are those of ASCII.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ruvo {

/// What relays fill their texts up with.
inline constexpr std::string_view kBlank = " ";
inline constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

/// The text without those characters at both ends.
std::string_view Trim(std::string_view text, std::string_view dropped);
/// The text without those characters at its end.
std::string_view TrimEnd(std::string_view text, std::string_view dropped);
/// Removes the blanks at the end of the text, back to a position at most.
void EraseTrailingBlanks(std::string& text, std::size_t start = 0);

/// Below 0x20, and 0x7F.
constexpr bool IsControlCharacter(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}
/// The text with a blank in the place of every control character.
std::string BlankControlCharacters(std::string_view text);

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
constexpr bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
constexpr char ToLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
constexpr char ToUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
std::string ToUpperText(std::string_view text);

/// The value of a hexadecimal digit; -1 for any other character.
constexpr int HexDigitValue(char c) {
    if (IsDigit(c)) {
        return c - '0';
    }
    const char lower = ToLower(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}
/// "1 record", "2 records".
std::string Counted(std::uint64_t number, std::string_view what);
/// Two upper-case hexadecimal digits.
void AppendHexByte(std::string& out, unsigned byte);

} // namespace ruvo
