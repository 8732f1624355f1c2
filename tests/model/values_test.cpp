#include "model/relay_values.h"
#include "model/values/character_set.h"
#include "model/values/parlane_location.h"
#include "support/case_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <numeric>
#include <stdexcept>
#include <tuple>

namespace ruvo {
namespace {

using namespace test;

/// Tagged hex with blanks, as the tables have it.
std::string Tagged(const CParlaneData* value) {
    std::string text = HexDigits(ToBytes(value));
    for (std::size_t at = 2; at < text.size(); at += 3)
        text.insert(at, " ");
    return text;
}

std::string Tagged(const std::unique_ptr<CParlaneData>& value) {
    return value ? Tagged(value.get()) : "none";
}

TEST(Values, DecodeAndEncodeAgain) {
    for (const char* refused :
         {"20 00", "20 05 01 02 03 04 05", "24 00", "24 05 01 02 03 04 05", "2C 06 01 00 00 00 7E 00",
          "30 04 01 00 7E 00", "34 03 00 00 40", "38 03 01 02 03", "3C 06 55 23 07 0D 25 02",
          "3C 08 55 23 07 0D 25 02 18 00", "44 01 0A", "44 03 0A 05 01", "48 00", "50 00", "40 01 00",
          "17 01 00", "14 00"})
        EXPECT_EQ(CDataFactory::CreateTagged(FromHex(refused)), nullptr) << refused;
    ForEachCase<4>("model/values.txt", [](auto& in, auto& written, auto& number, auto& real) {
        const auto value = CDataFactory::CreateTagged(FromHex(in));
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(Tagged(value->Clone()), written.empty() ? in : written);
        EXPECT_EQ(value->GetUnsigned(), std::stoul(number, nullptr, 0));
        EXPECT_TRUE(real == "nan" ? std::isnan(value->GetFloat()) : value->GetFloat() == std::stod(real));
    });
}

TEST(Values, EachTypeTakesItsSizesAndNoOthers) {
    std::string taken;
    for (std::uint32_t type = 0; type < 0x200; ++type) {
        std::string sizes;
        for (std::size_t size = 0; size <= 300; ++size) {
            const bool isFirst = sizes.empty() || sizes.back() == ' ';
            if (CDataFactory::Create(type, Bytes(size, 1)) != nullptr)
                sizes += isFirst ? std::to_string(size) + "-" : "";
            else if (!isFirst)
                sizes += std::to_string(size - 1) + " ";
        }
        if (!sizes.empty())
            taken += HexDigits(std::array{type}) + ":" + sizes + "|";
    }
    EXPECT_EQ(taken,
              "18:0-|1C:0-|20:1-4 |24:1-4 |28:0-|2C:4-4 |30:6-6 |34:4-|38:4-|3C:7-7 |44:2-2 |48:1-|50:1-|"
              "58:0-|64:0-|68:0-|6C:0-|FF:0-|");
}

TEST(Values, DefaultLimits) {
    ForEachCase<4>("model/default_limits.txt", [](auto& in, auto& minimum, auto& maximum, auto& step) {
        const auto value = CDataFactory::CreateTagged(FromHex(in));
        const auto check = [](const Value& limit, const std::string& want) {
            EXPECT_EQ(Tagged(limit), want);
            if (limit != nullptr) { // says what its bytes say
                const auto read = CDataFactory::CreateTagged(FromHex(want));
                EXPECT_EQ(std::pair(limit->GetUnsigned(), limit->GetFloat()),
                          std::pair(read->GetUnsigned(), read->GetFloat()));
            }
        };
        check(value->CreateMinimum(), minimum);
        check(value->CreateMaximum(), maximum);
        check(value->CreateStep(), step);
    });
}

/// What the exception says that the action throws.
template <class Exception, class Action>
std::string Thrown(Action action) {
    try {
        action();
    } catch (const Exception& exception) {
        return exception.what();
    }
    return "nothing";
}

TEST(Values, TaggedValuesCutShortAreRefused) {
    const std::string shorter = "a tagged value is shorter than its stated size";
    for (Bytes cut = FromHex("18 03 41 42"); !cut.empty(); cut.pop_back()) {
        EXPECT_EQ(Thrown<std::invalid_argument>([&] { CDataFactory::CreateTagged(cut); }), shorter);
        CByteCursor cursor(cut);
        std::unique_ptr<CParlaneData> value;
        EXPECT_FALSE(CDataFactory::TakeTagged(cursor, value));
        EXPECT_EQ(cursor.Remaining(), cut.size());
    }
    EXPECT_EQ(Thrown<std::invalid_argument>([&] { CDataFactory::CreateTagged({}); }), shorter);
}

TEST(Values, AppendingRefusesWhatTheLengthByteCannotSay) {
    Bytes bytes{0xAA};
    CDataFactory::AppendTagged(nullptr, bytes);
    EXPECT_EQ(bytes, (Bytes{0xAA, 0xFF, 0x00}));
    CDataFactory::AppendTagged(CDataFactory::Create(kTypeModem, Bytes(255, 7)).get(), bytes);
    const auto tooLong = CDataFactory::Create(kTypeModem, Bytes(256, 7));
    EXPECT_EQ(Thrown<std::invalid_argument>([&] { CDataFactory::AppendTagged(tooLong.get(), bytes); }),
              "a value of more than 255 bytes cannot be written");
    EXPECT_EQ(bytes.size(), 3U + 2U + 255U);
}

TEST(Values, WritesNothingBeyondTheValueOrTheBuffer) {
    for (const char* hex : {"18 02 41 42", "24 02 01 02", "2C 04 01 02 03 04", "34 04 01 02 03 04",
                            "38 04 01 02 03 04", "64 02 01 02", "FF 00"}) {
        const auto value = CDataFactory::CreateTagged(FromHex(hex));
        std::uint32_t typeCode = 0;
        std::size_t size = 0;
        Bytes buffer(value->GetSize() + 1, 0xEE);
        EXPECT_EQ(value->GetWireBytes(buffer, typeCode, size), value->GetTypeCode());
        value->GetWireBytes(std::span(buffer).last(0), typeCode, size);
        EXPECT_EQ(std::tuple(typeCode, size, buffer.back()),
                  std::tuple(value->GetTypeCode(), value->GetSize(), 0xEE))
            << hex;
    }
}

TEST(Numbers, SetFromDouble) {
    ForEachCase<3>("model/numbers.txt", [](auto& text, auto& form, auto& wire) {
        const double value = std::strtod(text.c_str(), nullptr);
        const CParlaneNumber number(value, 1, form == "long" ? ENumberForm::Long : ENumberForm::Short);
        EXPECT_EQ(Tagged(&number), wire);
        EXPECT_EQ(number.GetValue(), std::isfinite(value) ? value : 0.0);
    });
    const CParlaneNumber cut(FromHex("05 80"));
    EXPECT_EQ(Tagged(&cut), "2C 04 05 80 00 00");
}

TEST(Numbers, ReadAsTheNearestDouble) {
    for (int byte = 0; byte < 256; ++byte) {
        const Bytes bytes{0x15, 0xCD, 0x5B, 0x07, static_cast<std::uint8_t>(byte), 0};
        const std::string text = "123456789e" + std::to_string(byte < 254 ? byte - 126 : byte - 126 - 256);
        EXPECT_EQ(CParlaneNumber(bytes).GetValue(), std::strtod(text.c_str(), nullptr)) << text;
    }
}

TEST(Integers, BitsAndConversions) {
    CParlaneFlags flags(0, 2);
    flags.SetBit(33);
    EXPECT_EQ(flags.GetWord(), 2U);
    flags.SetAll();
    flags.ClearBit(33);
    EXPECT_EQ(Tagged(&flags), "20 02 FD FF");
    const CParlaneUint bits = CParlaneInt(-2, 1).ToUint();
    EXPECT_EQ(Tagged(&bits), "24 01 FE");
    EXPECT_EQ(CParlaneInt(5, 3).ToUint().GetValue(), 0U);
    CParlaneTimer timer(1U);
    timer.SetValue(7);
    EXPECT_EQ(Tagged(&timer), "38 04 07 00 00 00");
    CParlaneReply reply(FromHex("01 07"));
    reply.SetCode(8);
    EXPECT_EQ(Tagged(&reply), "48 02 08 07");
    EXPECT_EQ(CParlaneReply(8).GetSize() + 10 * CParlaneStringIndex(8).GetSize(), 21U);
    CParlaneMenu menu(FromHex("DF 01"));
    EXPECT_EQ(menu.GetLocation(), 0x01DF);
    menu.Set(2, 3);
    EXPECT_EQ(menu.GetColumn(), 3);
}

TEST(Times, CalendarFieldsAndDates) {
    ForEachCase<4>("model/dates.txt", [](auto& octets, auto& valid, auto& year, auto& weekday) {
        const SVariantDate date = CParlaneIEC870(FromHex(octets)).ToVariantDate();
        EXPECT_EQ(date.valid, valid == "1");
        EXPECT_EQ(std::pair(date.year, date.weekday), std::pair(std::stoi(year), std::stoi(weekday)));
    });
    const CParlaneIEC870 monday(FromHex("55 23 07 0D 25 02 18"));
    EXPECT_DOUBLE_EQ(monday.ToVariantDate().date, 45327 + (13 * 3600 + 7 * 60 + 9) / 86400.0);
    EXPECT_EQ(monday.ToVariantDate().milliseconds, 45);
    EXPECT_EQ(CParlaneIEC870(FromHex("00 00 00 00 E5 02 18")).ToFields().dayOfWeek, 0);
    EXPECT_EQ(CParlaneIEC870().GetOctets(), (CParlaneIEC870::Octets{0, 0, 0, 0, 1, 1, 98}));
}

TEST(Times, CompareByCalendarFieldsAlone) {
    const CParlaneIEC870 time(FromHex("55 23 07 0D 25 02 18"));
    EXPECT_EQ(time, CParlaneIEC870(FromHex("55 23 87 8D E5 02 98")));
    EXPECT_LT(CParlaneIEC870(FromHex("FF FF 3B 17 1F 0C 63")), time) << "1999 is before 2024";
    EXPECT_GT(CParlaneIEC870(FromHex("56 23 07 0D 25 02 18")), time);
    CParlaneIEC870 changed(FromHex("55 23 87 8D 25 F2 98"));
    changed.SetMinute(63);
    changed.SetHour(0);
    changed.SetMilliseconds(0x1234);
    changed.SetInvalid(false);
    changed.SetDayOfWeek(6);
    EXPECT_EQ(Tagged(&changed), "3C 07 34 12 3F 80 C5 F2 98");
    changed.SetHour(33);
    changed.SetDay(0x28);
    changed.SetMonth(0x1B);
    changed.SetYear(0xA5);
    for (const bool flag : {true, false}) {
        changed.SetInvalid(flag);
        changed.SetSummerTime(!flag);
        EXPECT_EQ(Tagged(&changed), flag ? "3C 07 34 12 BF 01 C8 FB A5" : "3C 07 34 12 3F 81 C8 FB A5");
        EXPECT_EQ(changed.IsInvalid(), flag);
    }
}

TEST(Texts, DeviceCharacters) {
    const std::string western = "\xC0\xC1\xC4\xC7\xC8\xC9\xCA\xCB\xCE\xCF\xD1\xD4\xD6\xD9\xDB\xDC\xDF\xE0\xE1"
                                "\xE4\xE7\xE8\xE9\xEA\xEB\xEE\xEF\xF1\xF4\xF6\xF9\xFB\xFC\xCD\xD3\xED\xF3";
    const std::string cyrillic =
        "\xC1\xC3\xC4\xC6\xC7\xC8\xC9\xCB\xCF\xD4\xD6\xD7\xD8\xD9\xDA\xDB\xDD\xDE\xDF";
    const std::string latin = "\xC0\xC2\xC5\xCA\xCC\xCD\xCE\xD0\xD1\xD2\xD3\xD5\xDC\xB2\xB3\xA3\xBC\xBD\xBE";
    std::string device(western.size(), '\x7F');
    std::iota(device.begin(), device.end(), '\x7F');
    // Every code page, a text, its device bytes, and what those read as.
    const std::tuple<unsigned, std::string, std::string, std::string> kCases[] = {
        {1252, "A~" + western, "A~" + device, "A~" + western},
        {1252, "\x7F\xD5.", "...", "..."},
        {1251, cyrillic, "\xD0\xD1\xD2\xD3\xD4\xD5\xD6\xD7\xD8\xD9\xDA\xDB\xDC\xDD\xDE\xDF\xE0\xE1\xE2",
         cyrillic},
        {1251, latin, "ABEKMHOPCTYXbIiJjSs", "ABEKMHOPCTYXbIiJjSs"},
        {1251, "\xE0\xE1\xF0\xFC\xFF", "A\xD0Pb\xE2", "A\xC1Pb\xDF"},
        {1251, "\xA8\xAF\xB8\xBF\xA1\xA2\xB0\xB5", "\x86\x88\x97\x99\xBC\xBD\xFD\xFE",
         "\xA8\xAF\xB8\xBF\xA1\xA2\xB0\xB5"},
        {437, "A\xC0\x7F", "A..", "A.."}};
    for (const auto& [codePage, text, bytes, read] : kCases) {
        SetDeviceCodePage(codePage);
        EXPECT_EQ(EncodeDeviceText(text), bytes) << codePage;
        EXPECT_EQ(DecodeDeviceText(bytes), read) << codePage;
    }
    SetDeviceCodePage(1251);
    EXPECT_EQ(ClampDeviceChar('\xC0', 'A', 'A'), '\xC0') << "within the range, it stays";
    SetDeviceCodePage(kDefaultCodePage);
    EXPECT_EQ(DecodeDeviceText("\x85\x10\x85\x85\xA4"), "\xCA\x10\x85\xCA.") << "the byte behind 0x10 stays";
}

TEST(Texts, CharacterRanges) {
    ForEachCase<5>("model/character_ranges.txt",
                   [](auto& character, auto& low, auto& high, auto& inRange, auto& clamped) {
                       const auto from = static_cast<unsigned>(std::stoul(low, nullptr, 0));
                       const auto to = static_cast<unsigned>(std::stoul(high, nullptr, 0));
                       EXPECT_EQ(IsDeviceCharInRange(character[0], from, to), !inRange.empty());
                       EXPECT_EQ(ClampDeviceChar(character[0], from, to), clamped[0]);
                   });
}

TEST(Texts, SettersAndForms) {
    CParlaneText text(FromHex("41 85"));
    EXPECT_EQ(text.GetText(), "A\xCA");
    text.SetText("\xF3\xD5");
    EXPECT_EQ(Tagged(&text), "18 02 A3 2E");
    text.SetText("plain");
    EXPECT_EQ(Tagged(&text), "18 05 70 6C 61 69 6E") << "nothing stays of the bytes before";
    text.SetText("plain\xCA");
    text.SetText(std::string_view(text.GetText()).substr(1));
    EXPECT_EQ(Tagged(&text), "18 05 6C 61 69 6E 85") << "a view of the text itself";
    CParlaneText unmapped(FromHex("41 FF 10 8A"));
    EXPECT_EQ(Tagged(unmapped.Clone().get()), "18 04 41 FF 10 8A") << "bytes that no text encodes to";
    EXPECT_EQ(unmapped.TakeText(), "A.\x10\x8A");
    EXPECT_EQ(Tagged(&unmapped), "18 00");
    CParlaneHex hex(FromHex("0A FF"));
    EXPECT_EQ(hex.GetText(), "0AFF");
    EXPECT_EQ(CParlanePassword("abc").GetMaskedText(), "***");
    CParlaneModem modem;
    modem.SetBytes(FromHex("41 54"));
    EXPECT_EQ(Tagged(&modem), "68 02 41 54");
    hex.SetText("1fG12X7A2B7");
    EXPECT_EQ(Tagged(&hex), "64 05 1F 00 02 7A 2B") << "a pair ends at what is no digit";
    EXPECT_EQ(Thrown<std::invalid_argument>([] { CParlaneEncryptedPassword("AbcdEf1", ""); }),
              "a password to encipher needs 8 characters");
}

} // namespace
} // namespace ruvo
