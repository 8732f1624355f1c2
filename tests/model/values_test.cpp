#include "model/values/character_set.h"
#include "model/values/data_factory.h"
#include "model/values/parlane_integers.h"
#include "model/values/parlane_location.h"
#include "model/values/parlane_number.h"
#include "model/values/parlane_text.h"
#include "model/values/parlane_time.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <numeric>
#include <stdexcept>
#include <tuple>

namespace ruvo {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes FromHex(const std::string& text) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 3) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

std::string Tagged(const CParlaneData* value) {
    Bytes bytes;
    CDataFactory::AppendTagged(value, bytes);
    std::string text;
    for (const std::uint8_t octet : bytes) {
        constexpr const char* kDigits = "0123456789ABCDEF";
        text += {kDigits[octet / 16], kDigits[octet % 16], ' '};
    }
    return text.substr(0, text.size() - 1);
}

std::string Tagged(const std::unique_ptr<CParlaneData>& value) {
    return value ? Tagged(value.get()) : "none";
}

TEST(Values, DecodeAndEncodeAgain) {
    // An empty output stands for the bytes that went in.
    const std::tuple<const char*, const char*, const char*, std::uint32_t, double> kCases[] = {
        {"flags of four", "20 04 01 02 03 84", "", 0x84030201, 0},
        {"signed byte", "28 01 80", "", 0xFFFFFF80, 0},
        {"signed of three reads 0", "28 03 FF FF FF", "28 03 00 00 00", 0, 0},
        {"short number -5", "2C 04 05 80 7E 01", "", 0, -5},
        {"long number", "30 06 FF FF FF FF 7D 21", "", 0, -214748364.7},
        {"signalling NaN comes back", "34 04 01 00 80 7F", "", 0, std::nan("")},
        {"float with bytes behind", "34 05 00 00 40 C0 07", "34 04 00 00 40 C0", 0, -3},
        {"timer with bytes behind", "38 05 01 00 00 80 07", "38 04 01 00 00 80", 0, 0},
        {"reply of three keeps its size", "48 03 0D 0E 0F", "48 03 0D 0E 00", 0x0D, 0},
        {"no data becomes invalid", "58 01 07", "FF 00", 0, 0},
        {"invalid with bytes", "FF 02 01 02", "FF 00", 0, 0},
        {"bytes behind the length are ignored", "24 01 07 99 99", "24 01 07", 7, 0}};
    for (const char* refused :
         {"20 00", "20 05 01 02 03 04 05", "24 00", "24 05 01 02 03 04 05", "2C 06 01 00 00 00 7E 00",
          "30 04 01 00 7E 00", "34 03 00 00 40", "38 03 01 02 03", "3C 06 55 23 07 0D 25 02",
          "3C 08 55 23 07 0D 25 02 18 00", "44 01 0A", "44 03 0A 05 01", "48 00", "50 00", "40 01 00",
          "17 01 00", "14 00"}) {
        EXPECT_EQ(CDataFactory::CreateTagged(FromHex(refused)), nullptr) << refused;
    }
    for (const auto& [name, in, written, number, real] : kCases) {
        SCOPED_TRACE(name);
        const std::string out = *written != '\0' ? written : in;
        const auto value = CDataFactory::CreateTagged(FromHex(in));
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(std::tuple(Tagged(value->Clone()), value->GetUnsigned()), std::tuple(out, number));
        EXPECT_TRUE(value->GetFloat() == real || std::isnan(real)) << value->GetFloat();
    }
}

TEST(Values, DefaultLimits) {
    const std::tuple<const char*, const char*, const char*, const char*> kCases[] = {
        {"18 02 41 42", "24 01 00", "24 01 FF", "24 01 01"},
        {"1C 02 41 42", "24 01 00", "24 01 FF", "24 01 01"},
        {"20 02 00 00", "24 02 FF FF", "24 02 10 00", "24 02 01 00"},
        {"24 01 07", "24 01 00", "24 01 FF", "24 01 01"},
        {"24 02 07 00", "24 02 00 00", "24 02 FF FF", "24 02 01 00"},
        {"24 03 07 00 00", "none", "none", "none"},
        {"24 04 07 00 00 00", "24 04 00 00 00 00", "24 04 FF FF FF FF", "24 04 01 00 00 00"},
        {"28 01 07", "28 01 80", "28 01 7F", "28 01 01"},
        {"28 02 07 00", "28 02 00 80", "28 02 FF 7F", "28 02 01 00"},
        {"28 04 07 00 00 00", "28 04 00 00 00 80", "28 04 FF FF FF 7F", "28 04 01 00 00 00"},
        {"2C 04 05 80 7E 03", "2C 04 FF FF 90 03", "2C 04 FF 7F 90 03", "2C 04 00 00 00 03"},
        {"30 06 05 00 00 80 7E 03", "30 06 FF FF FF FF 90 03", "30 06 FF FF FF 7F 90 03",
         "30 06 00 00 00 00 00 03"},
        {"34 04 00 00 00 00", "34 04 FF FF 7F FF", "34 04 FF FF 7F 7F", "34 04 00 00 00 00"},
        {"38 04 00 00 00 00", "24 02 00 00", "24 02 FF FF", "24 02 01 00"},
        {"3C 07 00 00 00 00 01 01 62", "3C 07 00 00 00 00 00 00 00", "3C 07 5F EA 3B 17 1F 0C 63",
         "3C 07 01 00 00 00 00 00 00"},
        {"44 02 01 02", "44 02 00 00", "44 02 FF FF", "44 02 01 01"},
        {"48 01 05", "24 01 00", "24 01 FF", "24 01 01"},
        {"48 02 05 06", "24 02 00 00", "24 02 FF FF", "24 02 01 00"},
        {"48 03 05 06 07", "none", "none", "none"},
        {"50 01 00", "24 01 00", "24 01 FF", "24 01 01"},
        {"50 02 00 00", "24 02 00 00", "24 02 FF FF", "24 02 01 00"},
        {"50 04 00 00 00 00", "none", "none", "none"},
        {"58 00", "FF 00", "FF 00", "FF 00"},
        {"64 02 0A FF", "24 01 00", "24 01 FF", "24 01 01"},
        {"68 02 41 54", "68 00", "68 00", "68 00"},
        {"6C 02 41 42", "24 01 00", "24 01 FF", "24 01 01"}};
    for (const auto& [in, minimum, maximum, step] : kCases) {
        const auto value = CDataFactory::CreateTagged(FromHex(in));
        EXPECT_EQ(Tagged(value->CreateMinimum()), minimum) << in;
        EXPECT_EQ(Tagged(value->CreateMaximum()), maximum) << in;
        EXPECT_EQ(Tagged(value->CreateStep()), step) << in;
    }
}

TEST(Values, TaggedValuesCutShortAreRefused) {
    for (Bytes cut = FromHex("18 03 41 42"); !cut.empty(); cut.pop_back()) {
        EXPECT_THROW(CDataFactory::CreateTagged(cut), std::invalid_argument) << cut.size();
        CByteCursor cursor(cut);
        std::unique_ptr<CParlaneData> value;
        EXPECT_FALSE(CDataFactory::TakeTagged(cursor, value));
        EXPECT_EQ(cursor.Remaining(), cut.size());
    }
    EXPECT_THROW(CDataFactory::CreateTagged({}), std::invalid_argument);
}

TEST(Values, AppendingRefusesWhatTheLengthByteCannotSay) {
    Bytes bytes{0xAA};
    CDataFactory::AppendTagged(nullptr, bytes);
    EXPECT_EQ(bytes, (Bytes{0xAA, 0xFF, 0x00}));
    CDataFactory::AppendTagged(CDataFactory::Create(kTypeModem, Bytes(255, 7)).get(), bytes);
    const auto tooLong = CDataFactory::Create(kTypeModem, Bytes(256, 7));
    EXPECT_THROW(CDataFactory::AppendTagged(tooLong.get(), bytes), std::invalid_argument);
    EXPECT_EQ(bytes.size(), 3U + 2U + 255U);
}

TEST(Values, WritesNothingBeyondTheValueOrTheBuffer) {
    for (const char* hex : {"18 02 41 42", "24 02 01 02", "2C 04 01 02 03 04", "64 02 01 02", "FF 00"}) {
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
    using enum ENumberForm;
    const std::tuple<const char*, double, ENumberForm, const char*> kCases[] = {
        {"negative", -0.05, Short, "2C 04 88 93 79 01"},
        {"a tie goes up", 1234.5, Short, "2C 04 D3 04 7E 01"},
        {"just below a tie", 1.2345, Short, "2C 04 D2 04 7B 01"},
        {"carry", 9999.5, Short, "2C 04 E8 03 7F 01"},
        {"too large", 1e300, Short, "2C 04 E8 03 FD 01"},
        {"too small", 1e-300, Long, "30 06 00 E1 F5 05 FE 01"},
        {"least double", 5e-324, Short, "2C 04 4D 13 FE 01"},
        {"not a number", std::nan(""), Long, "30 06 00 00 00 00 75 01"}};
    for (const auto& [name, value, form, wire] : kCases) {
        const CParlaneNumber number(value, 1, form);
        EXPECT_EQ(Tagged(&number), wire) << name;
        EXPECT_EQ(number.GetValue(), std::isfinite(value) ? value : 0.0) << name;
    }
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
    flags.ClearBit(32);
    EXPECT_EQ(Tagged(&flags), "20 02 FE FF");
    const CParlaneUint bits = CParlaneInt(-2, 1).ToUint();
    EXPECT_EQ(Tagged(&bits), "24 01 FE");
    CParlaneReply reply(FromHex("01 07"));
    reply.SetCode(9);
    EXPECT_EQ(Tagged(&reply), "48 02 09 07");
    CParlaneMenu menu(FromHex("DF 01"));
    EXPECT_EQ(menu.GetLocation(), 0x01DF);
    menu.Set(2, 3);
    EXPECT_EQ(menu.GetColumn(), 3);
}

TEST(Times, CalendarFieldsAndDates) {
    const std::tuple<const char*, const char*, bool, int, int> kCases[] = {
        {"leap day", "00 00 00 00 1D 02 18", true, 2024, 4},
        {"no leap day", "00 00 00 00 1D 02 17", false, 0, 0},
        {"last of century", "00 00 00 00 01 01 4F", true, 2079, 7},
        {"second 60", "60 EA 00 00 01 01 18", false, 0, 0},
        {"minute 60", "00 00 3C 00 01 01 18", false, 0, 0},
        {"hour 24", "00 00 00 18 01 01 18", false, 0, 0},
        {"hour 31", "00 00 00 1F 01 01 18", false, 0, 0},
        {"month 13", "00 00 00 00 01 0D 18", false, 0, 0}};
    for (const auto& [name, octets, valid, year, weekday] : kCases) {
        const SVariantDate date = CParlaneIEC870(FromHex(octets)).ToVariantDate();
        EXPECT_EQ(std::tuple(date.valid, date.year, date.weekday), std::tuple(valid, year, weekday)) << name;
    }
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
    EXPECT_EQ(Tagged(&changed), "3C 07 34 12 BF 80 25 F2 98");
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
    SetDeviceCodePage(kDefaultCodePage);
    EXPECT_EQ(DecodeDeviceText("\x85\x10\x85\x85\xA4"), "\xCA\x10\x85\xCA.") << "the byte behind 0x10 stays";
}

TEST(Texts, CharacterRanges) {
    const std::tuple<char, unsigned, unsigned, bool, char> kCases[] = {
        {'B', 'A', 'C', true, 'B'},       {'@', 'A', 'C', false, 'A'},
        {'D', 'A', 'C', false, 'C'},      {'\xCA', 0x85, 0x85, true, '\xCA'},
        {'z', 0x7F, 0x90, false, '\xC0'}, {'\xF3', 0, 0xA2, false, '\xED'},
        {'.', 0x20, 0x7E, true, '.'},     {'\xD5', 0x20, 0x7E, false, '.'}};
    for (const auto& [character, low, high, inRange, clamped] : kCases) {
        EXPECT_EQ(IsDeviceCharInRange(character, low, high), inRange) << character;
        EXPECT_EQ(ClampDeviceChar(character, low, high), clamped) << character;
    }
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
    hex.SetText("1fG12X7");
    EXPECT_EQ(Tagged(&hex), "64 03 1F 00 02") << "a pair ends at what is no digit";
}

} // namespace
} // namespace ruvo
