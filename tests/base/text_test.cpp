// Texts of relays and of Windows become UTF-8, and nothing in them can steer a terminal.
#include "base/code_page.h"
#include "base/text.h"

#include <gtest/gtest.h>

#include <array>

namespace ruvo {
namespace {

using namespace std::string_view_literals;

TEST(CodePage, EveryByteBecomesItsCharacter) {
    EXPECT_EQ(Cp1252ToUtf8("A~\x80\0\x9F\xA0\xFF"sv), "A~€\0\xC5\xB8\xC2\xA0ÿ"sv);
    EXPECT_EQ(Cp1252ToUtf8("\x80\x82\x83\x84\x85\x86\x87\x88\x89\x8A\x8B\x8C\x8E"), "€‚ƒ„…†‡ˆ‰Š‹ŒŽ");
    EXPECT_EQ(Cp1252ToUtf8("\x91\x92\x93\x94\x95\x96\x97\x98\x99\x9A\x9B\x9C\x9E\x9F"), "‘’“”•–—˜™š›œžŸ");
    EXPECT_EQ(Cp1252ToUtf8("\x81\x8D\x8F\x90\x9D"), "�����") << "bytes without a character";
}

TEST(CodePage, HalfCharactersOfUtf16AreMarked) {
    const std::pair<std::string_view, const char*> cases[] = {
        {"A\0\xFC\0\xAC\x20"sv, "Aü€"}, {"\x3D\xD8\x00\xDE"sv, "😀"}, {"\x3D\xD8\x41\0"sv, "�A"},
        {"\x00\xDE\x41\0"sv, "�A"},     {"\x41\0\x42"sv, "A�"},      {"\x3D\xD8"sv, "�"},
        {"\0\xD8\xFF\xDB"sv, "��"},     {"\0\xDC\0\xDC"sv, "��"}};
    for (const auto& [bytes, utf8] : cases)
        EXPECT_EQ(Utf16ToUtf8(bytes), utf8);
    const auto ends = "\x7F\0\x80\0\xFF\x07\0\x08\xFF\xD7\0\xE0\xFF\xFF\0\xD8\0\xDC\xFF\xDB\xFF\xDF"sv;
    EXPECT_EQ(Utf16ToUtf8(ends), "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"
                                 "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
    EXPECT_EQ(Utf8ToUtf16(Utf16ToUtf8(ends) + "\xFF~"), std::string(ends) + "\xFD\xFF~" + '\0');
}

TEST(CodePage, Utf8IsWhatIsWellFormed) {
    std::array<int, 3> sound{}; // characters of two, three and four bytes, by their first two
    for (int pair = 0x8000; pair < 0x10000; ++pair) {
        std::string text{static_cast<char>(pair >> 8), static_cast<char>(pair & 0xFF)};
        for (int& count : sound) {
            count += IsUtf8(text) ? 1 : 0;
            text += '\x80';
        }
    }
    EXPECT_EQ(sound, (std::array{1920, 960, 256}));
    for (const std::string_view bad : {"a\xC3\xBC"sv.substr(0, 2), "\xE1\x80\x7F"sv, "\xE1\x80\xC0"sv,
                                       "ghijklm\xFFno"sv, "\x80ghijklmno"sv})
        EXPECT_FALSE(IsUtf8(bad)) << bad;
    unsigned code = 0;
    std::size_t size = 0;
    EXPECT_FALSE(IsUtf8ControlAt("a\xC2", 1, code, size)) << "half a character";
}

TEST(Text, ControlCharactersBecomeBlanks) {
    EXPECT_EQ(BlankControlCharacters("a\0\r\n\x1B[2J\x7F~\x80\xE4"sv), "a    [2J ~\x80\xE4");
}

TEST(Text, LettersAreThoseOfAscii) {
    EXPECT_EQ(ToUpperText("/09:@AZ[`az{\xE4"), "/09:@AZ[`AZ{\xE4");
    std::string lower, letters;
    for (const char c : "/09:@AZ[`az{\xE4"sv) {
        lower += ToLower(c);
        letters += IsLetter(c) ? "L" : ".";
    }
    EXPECT_EQ(lower + letters, "/09:@az[`az{\xE4.....LL..LL..");
}

} // namespace
} // namespace ruvo
