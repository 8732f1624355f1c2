#include "model/format/format_digits.h"
#include "model/format/formatter.h"
#include "model/relay_values.h"
#include "support/case_table.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <new>
#include <random>

namespace {
thread_local std::size_t g_allocations = 0;
} // namespace

// Not to be inlined: compilers then take malloc and delete for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
    ++g_allocations;
    if (void* memory = std::malloc(size > 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace ruvo {
namespace {

using namespace test;

/// Values joined with "+".
CParlaneDataList FromWords(const std::string& words) {
    CParlaneDataList values;
    std::istringstream text(words);
    for (std::string word; std::getline(text, word, '+');)
        values.push_back(FromWord(word));
    return values;
}

std::string Format(const char* format, const std::string& words, bool& success,
                   const SLocale* locale = nullptr) {
    std::array<char, 400> buffer;
    success = true;
    const std::size_t length =
        FormatValues(locale, buffer.data(), buffer.size(), format, FromWords(words), success);
    EXPECT_EQ(buffer.at(length), '\0');
    return {buffer.data(), length};
}

TEST(Format, ValuesInEveryForm) {
    ForEachCase<4>("model/format_cases.txt", [](auto& format, auto& arguments, auto& want, auto& fails) {
        std::string all;
        std::istringstream lists(arguments);
        for (std::string words; lists >> words;) {
            bool success = false;
            all += (all.empty() ? "" : ";") + Format(format.c_str(), words, success);
            EXPECT_EQ(success, fails.empty());
        }
        EXPECT_EQ(all, want);
    });
}

TEST(Format, WhatIsLongOrHostileEndsWithTheBuffer) {
    const std::tuple<const char*, const char*, std::string> cases[] = {
        {"%99999999999d", "i5", std::string(399, ' ')},
        {"%.99999999999d", "i5", std::string(399, '0')},
        {"%.4294967297f", "f1", "1." + std::string(397, '0')},
        {"%.99999999k", "V0", std::string(399, ' ')},
        {"%*d", "i-2147483648+i5", "5" + std::string(398, ' ')},
        {"%.50f", "f1.4e-45", "0." + std::string(44, '0') + "140130"}}; // a denormal number
    for (const auto& [format, words, want] : cases) {
        bool success = false;
        EXPECT_EQ(Format(format, words, success), want) << format;
        EXPECT_TRUE(success) << format;
    }
}

TEST(Format, Units) {
    // 12345 in every unit behind its digits, from code 0 on; the last two codes have no unit.
    std::istringstream shown(
        "kA kV kdeg kOhm kW kVA kVAr km ks e3:1 kCel kHz e3% e3PU kA2 e3 kWh kVAh kVArh "
        "kmin kS kV/Hz kHz/s kmi e3ft e3in e3hr e3d e3j e3A2s e3m/s e3rev/s e3K e3F e3 e3");
    std::uint8_t unit = 0;
    for (std::string want; shown >> want; ++unit) {
        bool success = true;
        std::array<char, 40> text;
        const CParlaneNumber number(12345, unit, ENumberForm::Long);
        FormatValue(nullptr, text.data(), text.size(), "%k", &number, success);
        EXPECT_EQ(text.data(), " 12.35" + want);
    }
    EXPECT_EQ(unit, 36);
}

TEST(Format, Locales) {
    bool success = true;
    EXPECT_EQ(Format("%t", "t", success, &GetLocaleByCode("de")), "Montag 05 Februar 2024 13:07:09 GMT");
    EXPECT_EQ(Format("%k", "V230.5", success, &GetLocaleByCode("es")), " 230,5 V");
    const std::array<const char*, 6> codes{"uk", "fr", "de", "es", "ru", "xx"};
    for (std::size_t i = 0; i < codes.size(); ++i) {
        EXPECT_EQ(&GetLocale(i), &GetLocaleByCode(codes.at(i)));
        EXPECT_EQ(GetLocale(i).yearNumber, i < 5 ? 1948 : 1997);
    }
    EXPECT_EQ(&GetCurrentLocale(), &GetLocaleByCode("uk"));
    SLocale american = GetLocale(0);
    american.dateOrder = {EDatePart::Month, EDatePart::Day, EDatePart::Year};
    american.longWeekdays = american.longMonths = american.showCentury = american.clock24 = false;
    EXPECT_EQ(Format("%t", "t", success, &american), "Mon Feb 05 24 01:07:09 GMT");
    american.showAmPm = true;
    american.showWeekday = false;
    EXPECT_EQ(Format("%t", "t3000", success, &american), "Feb 05 24 12:07:09 AM GMT");
    EXPECT_EQ(Format("%t", "t3012", success, &american), "Feb 05 24 12:07:09 PM GMT");
    american.clock24 = true;
    EXPECT_EQ(Format("%t", "t", success, &american), "Feb 05 24 13:07:09 GMT")
        << "no mark on a 24-hour clock";
}

/// A language's text in UTF-8, from the code page of the language.
std::string Utf8(std::string_view text, bool isCyrillic) {
    std::string utf8;
    for (const char c : text) {
        const auto octet = static_cast<unsigned char>(c);
        const unsigned point = octet < 0x80 || !isCyrillic ? octet : octet - 0xC0U + 0x410U;
        utf8 += point < 0x80 ? "" : std::string(1, static_cast<char>(0xC0U | point >> 6U));
        utf8 += static_cast<char>(point < 0x80 ? point : 0x80U | (point & 0x3FU));
    }
    return utf8;
}

TEST(Format, WordsOfTheLocales) {
    ForEachCase<3>("model/locale_words.txt", [](auto& code, auto& part, auto& want) {
        const SLocale& l = GetLocaleByCode(code);
        const auto joined = [](const auto& names) {
            std::string words;
            for (const std::string_view name : names)
                words += (words.empty() ? "" : " ") + std::string(name);
            return words;
        };
        const char signs[] = {l.decimalPoint, l.timeSeparator, l.fractionSeparator,
                              static_cast<char>('0' + l.floatPrecision)};
        const std::string words[] = {
            joined(l.weekdays), joined(l.shortWeekdays), joined(l.months), joined(l.shortMonths),
            joined(std::array{l.dateCaption, l.badTime}) + "|" + std::string(l.invalid) + "|" +
                joined(std::array{l.am, l.pm, l.standardTime, l.summerTime, l.timeCaption}) + " " +
                std::string(signs, 4)};
        EXPECT_EQ(Utf8(words[std::stoul(part)], code == "ru"), want);
    });
}

TEST(Format, NativeArguments) {
    std::array<char, 150> text;
    const char* null = nullptr;
    FormatText(nullptr, text.data(), text.size(), "%f %e %d %u %x %*.*d %s %s %.2s %k %d %t%.1k <%s><%5s>%u",
               1234567.891, 1e-320, -1, -1, 255U, 5, 3, 7, "a", null, std::string_view("xyz"),
               SFormatNumber{-5e-324, 1}, "no integer", CParlaneIEC870(kMonday), SFormatNumber{0, 1}, 7);
    EXPECT_STREQ(text.data(), "1234567.891 10.00e-321 -1 4294967295 FF   007 a (null) xy -4.941e-324V 0 "
                              "Monday 05 February 2024 13:07:09 GMT  0 V <><     >0")
        << "a text that is none or missing is empty, a null pointer is not";
}

TEST(Format, CapacityCutsAnywhere) {
    const Value value = FromWord("V12345");
    const std::string whole = "U = |  12.35kV|!";
    for (std::size_t capacity = 0; capacity <= whole.size() + 2; ++capacity) {
        std::array<char, 40> buffer;
        buffer.fill('~');
        bool success = true;
        FormatValue(nullptr, buffer.data(), capacity, "U = |%9k|!", value.get(), success);
        const std::string want = capacity > 0 ? whole.substr(0, capacity - 1) : "~~~";
        EXPECT_EQ(std::string(buffer.data(), want.size()), want);
        EXPECT_EQ(capacity > 0 ? buffer.at(want.size()) : '\0', '\0');
        EXPECT_EQ(buffer.at(capacity), '~');
    }
}

// Numbers of every size; what relays send; halves between two of their digits; what 60 bits just hold.
TEST(Format, DigitsAreExact) {
    std::mt19937_64 random(1);
    for (int round = 0; round < 10'000; ++round) {
        const std::uint64_t bits = random();
        const double thousandths = static_cast<double>(bits % 100'000'000) / 1000;
        for (const double value :
             {std::bit_cast<double>(bits), thousandths, double{static_cast<float>(thousandths)},
              std::ldexp(static_cast<double>(bits % 4096), static_cast<int>(bits >> 58U) - 62)}) {
            if (!std::isfinite(value))
                continue;
            std::array<char, 800> text;
            const auto end = std::to_chars(text.data(), text.data() + text.size(), std::fabs(value),
                                           std::chars_format::scientific, 766);
            const std::string_view want(text.data(), end.ptr);
            const std::size_t mark = want.find('e');
            std::string digits = want[0] + std::string(want.substr(2, mark - 2));
            digits.resize(digits.find_last_not_of('0') + 1);
            const CDecimalDigits got(value);
            ASSERT_EQ(got.GetDigits(), digits) << value;
            ASSERT_EQ(got.GetExponent(), std::stoi(std::string(want.substr(mark + 1)))) << value;
        }
    }
}

TEST(Format, NumbersAllocateNothing) {
    const CParlaneDataList values = FromWords("i-5+u7+u4294967295+f1e-40+f3e38+V0.3333333+V-1e300+t");
    std::array<char, 2000> buffer;
    bool success = true;
    const std::size_t before = g_allocations;
    const std::size_t length = FormatValues(&GetCurrentLocale(), buffer.data(), buffer.size(),
                                            "%d %x %b %.200f %.100e %.400k %lk %lt", values, success);
    EXPECT_EQ(g_allocations, before);
    EXPECT_TRUE(success);
    EXPECT_GT(length, 600U);
}

} // namespace
} // namespace ruvo
