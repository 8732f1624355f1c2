// One entry changes, and nothing else: hand-made layouts, then generated ones.
#include "platform/text_file.h"
#include "support/case_table.h"
#include "tools/ini/ini_document.h"

#include <gtest/gtest.h>

#include <random>

namespace ruvo::test {
namespace {

const std::string kMark = "\xEF\xBB\xBF";

/// In UTF-16; the one letter beyond ASCII is ü.
std::string Wide(const std::string& utf8) {
    std::string wide(kUtf16Mark);
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        const bool isUmlaut = utf8.compare(at, 2, "ü") == 0;
        wide += {isUmlaut ? '\xFC' : utf8[at], '\0'};
        at += isUmlaut ? 1 : 0;
    }
    return wide;
}

/// The value "-" takes the entry away.
std::string Edit(const std::string& bytes, const std::string& key, const std::string& value) {
    CIniDocument document(bytes);
    EXPECT_EQ(document.WhyNotEditable(), "");
    value == "-" ? document.Remove("S", key) : document.Set("S", key, value);
    return document.Bytes();
}

bool IsGood(const std::string& before, const std::string& after, const std::string& key,
            const std::string& value) {
    return IsOnlyChange(CIniText::Parse(before), CIniText::Parse(after),
                        {"S", key, value == "-" ? nullptr : &value});
}

} // namespace

TEST(IniDocument, EditsOddLayouts) {
    ForEachCase<3>("tools/ini_layouts.txt", [](auto& before, auto& value, auto& after) {
        EXPECT_EQ(Edit(before, "RV005", value), after);
        EXPECT_TRUE(IsGood(before, after, "RV005", value));
    });
    std::string many = "[S]\nx=1\n"; // a file of them alone is edited at once
    for (int line = 0; line < 200'000; ++line)
        many += "RV005=1\n";
    EXPECT_EQ(Edit(many, "RV005", "-"), "[S]\nx=1\n");
    EXPECT_EQ(Edit(Wide("ü\n[S]\nRV005=ü\nü\nRV005"), "RV005", "-"), Wide("ü\n[S]\nü\n"));
    for (const char* const bytes : {"[S]\0\n", "\xFE\xFF\0[", "\xFF\xFE[\0]"})
        EXPECT_NE(CIniDocument(std::string(bytes, 5)).WhyNotEditable(), "");
}

// Pieces of files in any order, which a reader finds as they were but for the change.
TEST(IniDocument, ChangesNothingElseInGeneratedFiles) {
    const char* const pieces[] = {"[S]",   "[ s ]",       "[T] x",     "RV001=1",   "rv005 = 7",
                                  "RV005", "RV005=\"\"",  " RV007 =b", "; RV005=1", "text",
                                  "",      "=x",          "RV003='1'", "[S",        "RV005=1=2",
                                  "ü=ü",   "\tRV009=\x1A"};
    const char* const ends[] = {"\n", "\r\n", "\r", "\n\r"};
    const char* const keys[] = {"RV000", "RV005", "RV009"};
    std::mt19937 random(7);
    const auto pick = [&](const auto& from) { return from[random() % std::size(from)]; };
    for (int round = 0; round < 20000; ++round) {
        std::string before = random() % 8 == 0 ? kMark : "";
        for (std::size_t lines = random() % 9; lines > 0; --lines)
            before += pick(pieces) + std::string(lines == 1 && random() % 2 == 0 ? "" : pick(ends));
        const std::string key = pick(keys), value = random() % 3 == 0 ? "-" : "42";
        const std::string after = Edit(before, key, value);
        ASSERT_TRUE(IsGood(before, after, key, value)) << before << "\n---\n" << after;
        if (value != "-") { // one stretch of bytes is new, a value at most is gone
            const auto head = std::mismatch(before.begin(), before.end(), after.begin(), after.end()).first;
            const auto tail = std::mismatch(before.rbegin(), std::make_reverse_iterator(head), after.rbegin(),
                                            after.rend());
            const std::string gone(head, tail.first.base());
            ASSERT_TRUE(gone.size() <= 3 && gone.find_first_of("[;\r\n") == std::string::npos) << before;
        }
        ASSERT_TRUE(before.starts_with(kMark) || Edit(Wide(before), key, value) == Wide(after)) << before;
        std::string spoilt = after;
        spoilt.insert(random() % (after.size() + 1), "\nRV042=1\n[Z]\n");
        ASSERT_FALSE(IsGood(before, spoilt, key, value)) << spoilt;
    }
}

} // namespace ruvo::test
