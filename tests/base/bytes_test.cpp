// Blocks of bytes: read without passing their end, enciphered, and wiped after use.
#include "base/byte_cursor.h"
#include "base/secret.h"
#include "base/tea.h"

#include <gtest/gtest.h>

#include <array>

namespace ruvo {
namespace {

static_assert(TeaEncipher({0, 0}, {}) == STeaBlock{0x41EA3A0A, 0x94BAA940});
static_assert(TeaDecipher(TeaEncipher({1, 2}, {3, 4, 5, 6}), {3, 4, 5, 6}) == STeaBlock{1, 2});

TEST(ByteCursor, TakesWhatIsThereAndMovesForNothingElse) {
    constexpr std::array<std::uint8_t, 10> kBlock{0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 2, 'o', 'k'};
    for (std::size_t length = 0; length <= kBlock.size(); ++length) {
        CByteCursor cursor(std::span<const std::uint8_t>(kBlock).first(length));
        std::uint8_t byte = 9;
        std::uint16_t word = 9;
        std::uint32_t doubleWord = 9;
        std::string text = "before";
        const auto check = [&](bool taken, std::size_t end, std::size_t start) {
            EXPECT_EQ(taken, length >= end) << length;
            EXPECT_EQ(cursor.Remaining(), length - (taken ? end : std::min(start, length))) << length;
            return taken;
        };
        if (check(cursor.TakeByte(byte), 1, 0) && check(cursor.TakeWord(word), 3, 1) &&
            check(cursor.TakeDoubleWord(doubleWord), 7, 3))
            check(cursor.TakeText(text), 10, 7);
        EXPECT_EQ(byte, length < 1 ? 9 : 0xF1);
        EXPECT_EQ(word, length < 3 ? 9 : 0xF3F2);
        EXPECT_EQ(doubleWord, length < 7 ? 9 : 0xF7F6F5F4);
        EXPECT_EQ(text, length < 10 ? "before" : "ok");
    }
}

TEST(Secrets, AreWipedInPlace) {
    std::string text = "a password that does not fit into the object";
    const std::size_t size = text.size();
    text.resize(3); // what stands behind the end counts too
    { const CWipeAtScopeEnd wipe(text); }
    EXPECT_EQ(text, "");
    EXPECT_EQ(std::string(text.data(), size), std::string(size, '\0'));
    std::array<char, 4> bytes{'a', 'b', 'c', 'd'};
    { const CWipeValueAtScopeEnd wipe(bytes); }
    EXPECT_EQ(bytes, (std::array<char, 4>{}));
}

} // namespace
} // namespace ruvo
