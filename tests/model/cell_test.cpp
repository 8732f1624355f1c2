#include "model/cells/binary_cell.h"
#include "model/cells/cell_factory.h"
#include "model/cells/integer_cells.h"
#include "model/cells/number_cells.h"
#include "model/cells/other_cells.h"
#include "model/cells/text_cells.h"
#include "model/relay_values.h"
#include "model/status/string_table.h"
#include "support/case_table.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ruvo {
namespace {

using namespace test;

/// The cell of a value with its default limits.
std::unique_ptr<CCell> Cell(const std::string& value, std::string label = "") {
    return CCellFactory::CreateWithDefaultLimits({0xBF, 0x15}, FromWord(value).get(), std::move(label));
}

/// The cell of value, minimum, maximum and step.
std::unique_ptr<CCell> Cell(const std::array<std::string, 4>& values, int limitsApply) {
    return CCellFactory::Create({}, FromWord(values[0]).get(), FromWord(values[1]).get(),
                                FromWord(values[2]).get(), FromWord(values[3]).get(), nullptr, "", 0, 1,
                                limitsApply);
}

TEST(Cell, Texts) {
    ForEachCase<4>("model/cell_texts.txt", [](auto& value, auto& label, auto& text, auto& rawText) {
        const std::unique_ptr<CCell> cell = Cell(value, label)->Clone();
        EXPECT_EQ(cell->GetText(), text);
        EXPECT_EQ(cell->GetRawText(), rawText);
    });
    const std::string letters(300, 'x'), cut(255, 'x'); // a label that is no format of the value stays whole
    EXPECT_EQ(Cell("24 01 07", letters + "%u " + letters)->GetText(), cut + " 7 " + cut.substr(2));
    EXPECT_EQ(Cell("24 01 07", "%d" + letters)->GetText(), "%d" + letters);
    const Value daily = FromWord("S4001");
    CDateTimeCell german({{}, "Um %t"}, CParlaneIEC870(kMonday), {.step = daily.get()}, 2);
    EXPECT_EQ(german.GetAttributeB() * 10 + german.GetAttributeA() + german.GetHead().limitsApply, 2);
    EXPECT_EQ(german.Clone()->GetText(), "Um Montag 05 Februar 2024 13:07:09 GMT");
    CErrorList errors;
    EXPECT_FALSE(german.Validate(errors));
    std::string finding;
    errors.at(0)->GetMessageText(finding);
    EXPECT_EQ(finding,
              "Date time:\n\"Montag 05 Februar 2024 13:07:09.045 GMT\"\nnot aligned on daily interval.");
}

/// What is said of a value and its limits.
const std::map<unsigned, std::string>& Messages() {
    static const auto messages = [] {
        std::map<unsigned, std::string> read;
        ForEachCase<2>("model/cell_messages.txt", [&](auto& number, auto& text) {
            read[static_cast<unsigned>(std::stoul(number))] = text;
        });
        return read;
    }();
    return messages;
}

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
        EXPECT_EQ(text, FormatPositional(Messages().at(static_cast<unsigned>(std::stoul(part[0]))),
                                         {part[1], part[2], part[3]}));
    }
    EXPECT_EQ(errors.size(), count);
}

TEST(Cell, Validation) {
    ForEachCase<7>("model/cell_findings.txt", [](auto& value, auto& minimum, auto& maximum, auto& step,
                                                 auto& valueAfter, auto& maximumAfter, auto& findings) {
        const auto cell = Cell({value, minimum, maximum, step}, 0);
        CheckFindings(*cell, findings);
        EXPECT_EQ(ToBytes(cell->GetValue()), ToBytes(FromWord(valueAfter).get()));
        EXPECT_EQ(ToBytes(cell->GetMaximum()), ToBytes(FromWord(maximumAfter).get()));
        CheckFindings(*cell, step == "V-3" ? "237 -3.000000" : "");
    });
    for (const char* value : {"i5", "x5", "b5", "f5", "V5", "t", "T5", "18 01 41", "44 02 02 01"})
        CheckFindings(*Cell({value, "FF", "FF", "FF"}, 0), "");
    for (const std::string type : {"24 01 ", "50 01 ", "28 01 "}) { // no room for the limit
        const std::string limit = type == "28 01 " ? "28 0" : "24 0", most = limit == "28 0" ? "7F" : "FF";
        const auto narrow = Cell({type + "05", limit + "2 2C 01", limit + "1 07", limit + "1 01"}, 0);
        CheckFindings(*narrow, "228 7 300; 230 5 300");
        EXPECT_EQ(ToBytes(narrow->GetValue()), FromHex(type + most));
        EXPECT_EQ(ToBytes(narrow->GetMaximum()), FromHex(limit + "1 " + most));
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
        check({kind + "7", "FF", limit + "9", limit + "1"}, kind + "4", true, true); // only one limit
        check({kind + "7", limit + "5", "FF", limit + "1"}, kind + "10", true, true);
    }
    const Values bits{"b0", "u15", "u8", "u1"};
    check(bits, "b15", true, true);
    check(bits, "b16", true, false);
    check(bits, "20 02 0F 00", false, false);
    check({"V7", "V5", "V9", "V1"}, "2C 04 07 00 7E 02", false, false); // another unit
    check({"18 01 41", "u65", "u90", "u1"}, "18 02 41 62", true, false);
    check({"18 01 41", "u65", "u90", "u1"}, "18 03 5A 20 20", true, true); // blanks at the end do not count
    check({"18 01 41", "u65", "u90", "u1"}, "18 02 20 20", true, true);
}

TEST(Cell, Factory) {
    const Value value = FromWord("24 03 07 00 00"); // a size without default limits
    const auto cell =
        CCellFactory::Create({0xBF, 0x15}, value.get(), nullptr, nullptr, nullptr, nullptr, "", 3, 4, 5);
    EXPECT_EQ(cell->GetID().GetText() + CCellID().GetText(), "BF.15FF.FF");
    EXPECT_EQ(CMenuLocation(CMenuLocation(cell->GetID()).GetCellID()).GetLocation(), 0xBF15);
    EXPECT_EQ(CMenuLocation().GetLocation(), 0);
    EXPECT_EQ(cell->GetAttributeB() * 10 + cell->GetAttributeA(), 34);
    CheckFindings(*cell, "");
    EXPECT_FALSE(Cell("FF 00")->LimitsApply());
    const auto plain = Cell("24 01 07");
    EXPECT_EQ(plain->GetAttributeB() * 10 + plain->GetAttributeA() + plain->GetHead().limitsApply, 2);
    EXPECT_EQ(ToBytes(plain->GetMaximum()), FromHex("24 01 FF"));
    EXPECT_EQ(Cell("48 01 05"), nullptr);
    const Value integer = FromWord("28 02 64 00"), scale = FromWord("2C 04 05 00 7C 01");
    const auto scaled =
        CCellFactory::Create({}, integer.get(), integer->CreateMinimum().get(),
                             integer->CreateMaximum().get(), integer.get(), scale.get(), "%k", 0, 1, 1);
    EXPECT_EQ(scaled->GetText(), " 5.000 V");
    EXPECT_DOUBLE_EQ(static_cast<CNumericCell&>(*scaled).GetMinimumNumber(), -32768 * 0.05);
    EXPECT_DOUBLE_EQ(static_cast<CNumericCell&>(*scaled).GetMaximumNumber(), 32767 * 0.05);
    EXPECT_EQ(ToBytes(scaled->GetStep()), ToBytes(scaled->GetValue()));
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
    static_cast<CIndexedCell&>(*made).SetTexts({});
    const auto heading = Cell("FF 00");
    for (const CCell* cell : {made.get(), heading.get()}) {
        std::string output = "of another";
        cell->Format(output, "%s", EFormatMode::Value);
        EXPECT_EQ(output, "");
    }

    const auto flags = Cell({"b5", "u7", "u8", "u1"}, 1);
    static_cast<CBinaryCell&>(*flags).SetBitNames({"zero", "one", "two", "three"});
    std::string list;
    static_cast<CBinaryCell&>(*flags).GetBitListText(list, 98);
    EXPECT_EQ(list, "\x19  ON   98  zero\x19  OFF  99  one\x19  ON  100  two");
    const auto longest = Cell("20 04 00 00 00 80"); // more names than bits
    static_cast<CBinaryCell&>(*longest).SetBitNames(std::vector<std::string>(40, "n"));
    static_cast<CBinaryCell&>(*longest).GetBitListText(list, 0);
    EXPECT_TRUE(list.ends_with("\x19  ON   31  n")) << list;

    const auto any = Cell({"18 01 41", "FF", "FF", "FF"}, 1);
    const auto& free = static_cast<CStringCell&>(*any);
    EXPECT_EQ(std::tuple(free.GetMinimumCode(), free.GetMaximumCode(), free.GetStepCode()),
              std::tuple(0U, 255U, 1U));
    const auto text = Cell("18 04 41 42 20 20");
    static_cast<CTextCell&>(*text).SetTextValue("A\x80"); // the relay has no euro
    EXPECT_EQ(ToBytes(text->GetValue()), FromHex("18 04 41 2E 20 20"));
    EXPECT_FALSE(static_cast<CTextCell&>(*text).IsTextAllowed("A\x80"));
    for (const auto& [word, given, stored] : {std::tuple{"1C 02 41 42", "x", "1C 02 78 20"},
                                              {"64 02 0A FF", "1", "64 02 10 00"},
                                              {"6C 02 41 42", "xyz", "6C 02 78 79"}}) {
        const auto other = Cell(word);
        static_cast<CStringCell&>(*other).SetTextValue(given);
        EXPECT_EQ(ToBytes(other->GetValue()), FromHex(stored));
    }
}

} // namespace
} // namespace ruvo
