// Texts of relays and of Windows become UTF-8, and nothing in them can steer a terminal.
#include "base/code_page.h"
#include "base/text.h"

#include <gtest/gtest.h>

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
        {"\x00\xDE\x41\0"sv, "�A"},     {"\x41\0\x42"sv, "A�"},      {"\x3D\xD8"sv, "�"}};
    for (const auto& [bytes, utf8] : cases)
        EXPECT_EQ(Utf16ToUtf8(bytes), utf8);
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
