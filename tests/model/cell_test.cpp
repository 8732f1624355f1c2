#include "model/cells/binary_cell.h"
#include "model/cells/cell_factory.h"
#include "model/cells/integer_cells.h"
#include "model/cells/number_cells.h"
#include "model/cells/other_cells.h"
#include "model/cells/text_cells.h"
#include "model/relay_values.h"
#include "model/status/string_table.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ruvo {
namespace {

using namespace test;

/// The cell of a value with its default limits.
std::unique_ptr<CCell> Cell(const std::string& value, std::string labelTemplate = "") {
    return CCellFactory::CreateWithDefaultLimits({0xBF, 0x15}, FromWord(value).get(),
                                                 std::move(labelTemplate));
}

/// The cell of value, minimum, maximum and step.
std::unique_ptr<CCell> Cell(const std::array<std::string, 4>& values, int limitsApply) {
    return CCellFactory::Create({}, FromWord(values[0]).get(), FromWord(values[1]).get(),
                                FromWord(values[2]).get(), FromWord(values[3]).get(), nullptr, "", 0, 1,
                                limitsApply);
}

TEST(Cell, Texts) {
    const std::array<const char*, 4> cases[] = {
        // value, template, text, raw text
        {"2C 04 01 09 7D 01", "Voltage %k", "Voltage 230.5 V", "Voltage  230.5 V"},
        {"2C 04 01 09 7D 01", "%k", " 230.5 V", " 230.5 V"},
        {"2C 04 01 09 7D 01", "Voltage %s", "Voltage 230.5 V", "Voltage  230.5 V"},
        {"24 01 07", "Ratio [%u]", "Ratio [7]", "Ratio [7]"},
        {"24 01 07", "[%u]", "[7]", "[7]"},
        {"24 01 07", "100%% done", "100% done", "100% done"},
        {"24 01 07", "100%% %% is %u%%", "100% % is 7%", "100% % is 7%"},
        {"24 01 07", "%d", "%d", "7"},
        {"24 01 07", "\x10\x05 A\t\x19\x02\n\x14 %u\r\x1D!", ". A  . 7 !",
         "\x10\x05 A\t\x19\x02\n\x14 7\r\x1D!"},
        {"20 01 81", "Flags %s", "Flags 0000000010000001", "Flags 0000000010000001"},
        {"28 01 FF", "Int %x", "Int -1", "Int -1"},
        {"34 04 00 00 20 41", "Float %u", "Float 10.00000", "Float 10.00000"},
        {"38 04 01 00 00 80", "Timer %s", "Timer 2147483649", "Timer 2147483649"},
        {"3C 07 55 23 07 0D 25 02 18", "At %d", "At Monday 05 February 2024 13:07:09 GMT",
         "At Monday 05 February 2024 13:07:09 GMT"},
        {"3C 07 00 00 00 00 00 00 00", "At %t, and so on, beyond the forty-nine characters",
         "At Illegal time value, and so on, beyond the forty-n",
         "At Illegal time value, and so on, beyond the forty-n"},
        {"44 02 02 01", "Menu %s", "Menu 258", "Menu 258"},
        {"18 03 41 42 85", "Text %d", "Text AB\xCA", "Text AB\xCA"},
        {"1C 02 41 42", "Password %s", "Password **", "Password **"},
        {"64 02 0A FF", "Hex %s", "Hex 0AFF", "Hex 0AFF"},
        {"68 03 41 54 07", "Dial %s", "Dial AT.", "Dial AT."},
        {"6C 01 41", "Secret %s", "Secret ", "Secret "},
        {"FF 00", "Heading 50%%", "Heading 50%", ""},
        {"FF 00", "Heading %u", "Heading ", "Heading "},
        {"50 01 01", "State %s", " ", ""},
    };
    for (const auto& [value, labelTemplate, text, rawText] : cases) {
        const std::unique_ptr<CCell> cell = Cell(value, labelTemplate)->Clone();
        EXPECT_EQ(cell->GetText(), text) << labelTemplate;
        EXPECT_EQ(cell->GetRawText(), rawText) << labelTemplate;
    }
    const std::string letters(300, 'x'), cut(255, 'x'); // a label that is no format of the value stays whole
    EXPECT_EQ(Cell("24 01 07", letters + "%u " + letters)->GetText(), cut + " 7 " + cut.substr(2));
    EXPECT_EQ(Cell("24 01 07", "%d" + letters)->GetText(), "%d" + letters);
    const Value daily = FromWord("S4001");
    CDateTimeCell german({{}, "Um %t"}, CParlaneIEC870(kMonday), {.step = daily.get()}, 2);
    EXPECT_EQ(german.Clone()->GetText(), "Um Montag 05 Februar 2024 13:07:09 GMT");
    CErrorList errors;
    EXPECT_FALSE(german.Validate(errors));
    std::string finding;
    errors.at(0)->GetMessageText(finding);
    EXPECT_EQ(finding,
              "Date time:\n\"Montag 05 Februar 2024 13:07:09.045 GMT\"\nnot aligned on daily interval.");
}

/// What is said of a value and its limits.
const std::map<unsigned, std::string> kMessages{
    {225, "Step size \"%1\" should be \"1\"."},
    {226, "Max value \"%1\" > \"%2\" (the number of bits)."},
    {227, "Value \"%1\" has non-settable flags that aren't zero.\nEditable mask is \"%2\"."},
    {228, "Max value \"%1\" < min value \"%2\"."},
    {229, "Max value \"%1\" not aligned on step \"%2\" from min value \"%3\"."},
    {230, "Value \"%1\" < min value \"%2\"."},
    {231, "Value \"%1\" > max value \"%2\"."},
    {232, "Value \"%1\" not aligned on step \"%2\" from min value \"%3\"."},
    {233, "Date time:\n\"%1\"\nnot aligned on %2ms step interval."},
    {234, "Date time:\n\"%1\"\nnot aligned on %2min step interval."},
    {235, "Date time:\n\"%1\"\nnot aligned on %2 hour step interval."},
    {236, "Date time:\n\"%1\"\nnot aligned on daily interval."},
    {237, "Step size \"%1\" was negative."},
    {238, "Value \"%1\" contains characters out of range."}};

/// Findings are written "number argument argument argument; ...", "_" in an argument being a blank.
void CheckFindings(CCell& cell, const std::string& findings) {
    CErrorList errors;
    EXPECT_EQ(cell.Validate(errors), findings.empty());
    std::istringstream rows(findings);
    std::size_t count = 0;
    for (std::string row; std::getline(rows, row, ';'); ++count) {
        std::replace(row.begin(), row.end(), '_', '\n');
        std::istringstream parts(row);
        std::array<std::string, 4> part;
        for (std::string& text : part) {
            std::getline(parts >> std::ws, text, ' ');
            std::replace(text.begin(), text.end(), '\n', ' ');
        }
        ASSERT_LT(count, errors.size()) << row;
        std::string text;
        errors[count]->GetMessageText(text);
        EXPECT_EQ(text, FormatPositional(kMessages.at(static_cast<unsigned>(std::stoul(part[0]))),
                                         {part[1], part[2], part[3]}));
    }
    EXPECT_EQ(errors.size(), count);
}

TEST(Cell, Validation) {
    // value, minimum, maximum, step | value and maximum afterwards | findings
    std::istringstream cases(R"(u20 u10 u30 u10 | u20 u30 |
u20 u10 u25 u10 | u20 u20 | 229 25 10 10
u99 u10 u5 u0 | u10 u10 | 228 5 10; 231 99 10
u65541 u1 u131073 u65536 | u65537 u131073 | 232 65541 65536 1
i-16 i-5 i5 i3 | i-5 i4 | 229 5 3 -5; 230 -16 -5
i5 i-2147483648 i2147483647 i-1 | i5 i2147483647 |
i0 i-2147483648 i2147483647 i2 | i0 i2147483646 | 229 2147483647 2 -2147483648
x5 u0 u2 u1 | x2 u2 | 231 5 2
f12.5 f0 f20 f3 | f12 f20 | 232 12.500000 3.000000 0.000000
f0.3 f0 f20 f0.1 | f0.3 f20 |
f600000.5 f0 f1000000 f1 | f600000 f1000000 | 232 600000.500000 1.000000 0.000000
f33554432 f0 f100000000 f0.1 | f33554432 f100000000 |
30_06_FF_FF_FF_7F_7E_00 30_06_00_00_00_00_7E_00 30_06_FF_FF_FF_7F_7F_00 30_06_03_00_00_00_7E_00 | 30_06_CD_CC_CC_0C_7F_00 30_06_FF_FF_FF_7F_7F_00 | 232 2147483647.000000 3.000000 0.000000
2C_04_FF_7F_7E_00 2C_04_01_00_7E_00 2C_04_39_30_7E_00 2C_04_00_00_7E_00 | 2C_04_39_30_7E_00 2C_04_39_30_7E_00 | 231 32767.000000 12345.000000
24_01_FF 24_02_00_00 24_02_00_10 24_02_02_00 | 24_01_FE 24_02_00_10 | 232 255 2 0
V0.3 V0 V20 V0.1 | V0.3 V20 |
V-7 V-5 V20 V0 | V-5 V20 | 230 -7.000000 -5.000000
30_06_07_00_00_00_7E_02 V9 V20 V0 | 30_06_00_E9_A4_35_76_02 V20 | 230 7.000000 9.000000
2C_04_07_00_7E_02 V9 V20 V0 | 2C_04_28_23_7B_02 V20 | 230 7.000000 9.000000
V13 V0 V-5 V-3 | V0 V0 | 237 -3.000000; 228 -5.000000 0.000000; 231 13.000000 0.000000
b171 u15 u9 u2 | b11 u8 | 225 0x00000002; 226 9 8; 227 0x000000ab 0x0000000f
18_04_41_62_21_20 u65 u90 u2 | 18_04_41_5A_41_41 u90 | 225 2; 238 Ab!_
18_01_41 u66 u65 u1 | 18_01_42 u66 | 228 65 66; 238 A
t3141 FF FF S100 | 3C_07_28_23_07_8D_25_02_18 FF | 233 Monday_05_February_2024_13:07:09.045_st 100
t2148 FF FF S2015 | 3C_07_00_00_8F_0D_25_02_18 FF | 234 Monday_05_February_2024_13:20:09.045_GMT 15
t2015 FF FF S2015 | 3C_07_00_00_0F_0D_25_02_18 FF | 234 Monday_05_February_2024_13:15:09.045_GMT 15
3C_07_00_00_0F_0D_25_02_18 FF FF S2015 | 3C_07_00_00_0F_0D_25_02_18 FF |
t FF FF S3006 | 3C_07_00_00_00_0C_25_02_18 FF | 235 Monday_05_February_2024_13:07:09.045_GMT 6
3C_07_00_00_00_0D_25_02_18 FF FF S3006 | 3C_07_00_00_00_0C_25_02_18 FF | 235 Monday_05_February_2024_13:00:00.000_GMT 6
3C_07_00_00_07_0C_25_02_18 FF FF S3006 | 3C_07_00_00_00_0C_25_02_18 FF | 235 Monday_05_February_2024_12:07:00.000_GMT 6
3C_07_01_00_00_0C_25_02_18 FF FF S3006 | 3C_07_00_00_00_0C_25_02_18 FF | 235 Monday_05_February_2024_12:00:00.001_GMT 6
3C_07_00_00_00_0C_25_02_18 FF FF S3006 | 3C_07_00_00_00_0C_25_02_18 FF |
t FF FF S4001 | 3C_07_00_00_00_00_25_02_18 FF | 236 Monday_05_February_2024_13:07:09.045_GMT
3C_07_00_00_00_0C_25_02_18 FF FF S4001 | 3C_07_00_00_00_00_25_02_18 FF | 236 Monday_05_February_2024_12:00:00.000_GMT
3C_07_00_00_07_00_25_02_18 FF FF S4001 | 3C_07_00_00_00_00_25_02_18 FF | 236 Monday_05_February_2024_00:07:00.000_GMT
3C_07_01_00_00_00_25_02_18 FF FF S4001 | 3C_07_00_00_00_00_25_02_18 FF | 236 Monday_05_February_2024_00:00:00.001_GMT
3C_07_00_00_00_00_25_02_18 FF FF S4001 | 3C_07_00_00_00_00_25_02_18 FF |
t FF FF 3C_07_64_00_0F_06_01_00_00 | 3C_07_28_23_07_0D_25_02_18 FF | 233 Monday_05_February_2024_13:07:09.045_GMT 100
t FF FF 3C_07_00_00_0F_06_01_00_00 | 3C_07_00_00_00_0D_25_02_18 FF | 234 Monday_05_February_2024_13:07:09.045_GMT 15
t FF FF 3C_07_00_00_00_06_01_00_00 | 3C_07_00_00_00_0C_25_02_18 FF | 235 Monday_05_February_2024_13:07:09.045_GMT 6)");
    for (std::string row; std::getline(cases, row);) {
        SCOPED_TRACE(row);
        std::array<std::string, 8> words; // the bars are two of them
        std::istringstream parts(row);
        for (std::string& word : words) {
            parts >> word;
        }
        std::string findings;
        std::getline(parts >> std::ws, findings);
        const auto cell = Cell({words[0], words[1], words[2], words[3]}, 0);
        CheckFindings(*cell, findings);
        EXPECT_EQ(ToBytes(cell->GetValue()), ToBytes(FromWord(words[5]).get()));
        EXPECT_EQ(ToBytes(cell->GetMaximum()), ToBytes(FromWord(words[6]).get()));
        CheckFindings(*cell, words[3] == "V-3" ? "237 -3.000000" : "");
    }
    for (const std::string type : {"24 01 ", "50 01 "}) { // no room for the limit
        const auto narrow = Cell({type + "05", "24 02 2C 01", "24 02 00 10", "24 02 01 00"}, 0);
        CheckFindings(*narrow, "230 5 300");
        EXPECT_EQ(ToBytes(narrow->GetValue()), ToBytes(FromWord(type + "FF").get()));
    }
}

TEST(Cell, Compatibility) {
    using Values = std::array<std::string, 4>;
    const auto check = [](const Values& cell, const std::string& other, bool any, bool within) {
        EXPECT_EQ(Cell(cell, 0)->IsCompatible(*Cell(other)), any) << cell[0] << ' ' << other;
        EXPECT_EQ(Cell(cell, 1)->IsCompatible(*Cell(other)), within) << cell[0] << ' ' << other;
    };
    for (const std::string kind : {"u", "i", "x", "f", "V", "T"}) {
        const std::string limit = kind == "x" || kind == "T" ? "u" : kind;
        const Values cell{kind + "7", limit + "5", limit + "9", limit + "1"};
        check(cell, kind + "5", true, true);
        check(cell, kind + "9", true, true);
        check(cell, kind + "4", true, false);
        check(cell, kind + "10", true, false);
        check(cell, "18 01 37", false, false);
    }
    const Values bits{"b0", "u15", "u8", "u1"};
    check(bits, "b15", true, true);
    check(bits, "b16", true, false);
    check(bits, "20 02 0F 00", false, false);
    check({"V7", "V5", "V9", "V1"}, "2C 04 07 00 7E 02", false, false); // another unit
    check({"18 01 41", "u65", "u90", "u1"}, "18 02 41 62", true, false);
    check({"18 01 41", "u65", "u90", "u1"}, "18 03 5A 20 20", true, true); // blanks at the end do not count
}

TEST(Cell, Factory) {
    const Value value = FromWord("24 03 07 00 00"); // a size without default limits
    const auto cell =
        CCellFactory::Create({0xBF, 0x15}, value.get(), nullptr, nullptr, nullptr, nullptr, "", 3, 4, 5);
    EXPECT_EQ(cell->GetID().GetText() + CCellID().GetText(), "BF.15FF.FF");
    EXPECT_EQ(CMenuLocation(cell->GetID()).GetLocation(), 0xBF15);
    EXPECT_EQ(cell->GetAttributeB() * 10 + cell->GetAttributeA(), 34);
    CheckFindings(*cell, "");
    EXPECT_FALSE(Cell("FF 00")->LimitsApply());
    EXPECT_EQ(Cell("48 01 05"), nullptr);
    const Value integer = FromWord("28 02 64 00"), scale = FromWord("2C 04 05 00 7C 01");
    const auto scaled = CCellFactory::Create({}, integer.get(), integer->CreateMinimum().get(), nullptr,
                                             nullptr, scale.get(), "%k", 0, 1, 1);
    EXPECT_EQ(scaled->GetText(), " 5.000 V");
    EXPECT_DOUBLE_EQ(static_cast<CNumericCell&>(*scaled).GetMinimumNumber(), -32768 * 0.05);
    const Value odd = FromWord("u5"), none = FromWord("FF");
    for (const auto& [other, text] : {std::pair("u5", " 100.0"), {"FF", "100"}}) {
        const Value noNumber = FromWord(other);
        const auto asGiven =
            CCellFactory::Create({}, integer.get(), nullptr, nullptr, nullptr, noNumber.get(), "%k", 0, 1, 1);
        EXPECT_EQ(asGiven->GetRawText(), text);
    }
}

TEST(Cell, NamesAndTexts) {
    const auto made = Cell("50 01 01", "State %5s.");
    static_cast<CIndexedCell&>(*made).SetTexts({"Off", "On"});
    EXPECT_EQ(made->Clone()->GetText(), "State On.");
    static_cast<CIndexedCell&>(*made).SetTexts({"Off"});
    EXPECT_EQ(made->GetRawText(), "State      .");

    const auto flags = Cell({"b5", "u7", "u8", "u1"}, 1);
    static_cast<CBinaryCell&>(*flags).SetBitNames({"zero", "one", "two", "three"});
    std::string list;
    static_cast<CBinaryCell&>(*flags).GetBitListText(list, 98);
    EXPECT_EQ(list, "\x19  ON   98  zero\x19  OFF  99  one\x19  ON  100  two");

    const auto text = Cell("18 04 41 42 20 20");
    static_cast<CTextCell&>(*text).SetTextValue("A\x80"); // the relay has no euro
    EXPECT_EQ(ToBytes(text->GetValue()), FromHex("18 04 41 2E 20 20"));
    EXPECT_FALSE(static_cast<CTextCell&>(*text).IsTextAllowed("A\x80"));
}

} // namespace
} // namespace ruvo
