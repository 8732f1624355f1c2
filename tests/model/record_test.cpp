#include "model/cells/binary_cell.h"
#include "model/cells/cell_factory.h"
#include "model/cells/integer_cells.h"
#include "model/cells/number_cells.h"
#include "model/cells/text_cells.h"
#include "model/format/display_layout.h"
#include "model/records/event_kinds.h"
#include "model/records/event_location.h"
#include "model/records/event_record.h"
#include "model/relay_values.h"
#include "support/case_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>

namespace ruvo {
namespace {

using namespace test;

static_assert(FindEventKind(5) != nullptr && FindEventKind(6) == nullptr);

const std::string kTime = "04 03 02 01 3C 07 55 23 07 0D 25 02 18 00 00 "; // id, time, reserved
const std::string kHead = kTime + "01 2A 01 61 01 62 00 31 01 ";           // event code, aux texts, location
const std::string kSimpleBody = kHead + "07 54 72 69 70 20 25 6B 2C 04 DC 05 7F 00 02 25 75 24 01 05 FF 00";
const std::string kExtendedBody = kHead + "01 54 FF 00 00";
const std::string kCells = "07 53 74 61 74 65 20 73 24 02 05 00 00 "    // a number
                           "01 42 20 01 02 02 03 6F 6E 65 03 74 77 6F " // bits with names
                           "01 49 18 02 6F 6E 00 01 48 FF 00 00";       // an index, a heading

CSimpleEventRecord MakeSimple(const std::vector<const char*>& words,
                              Value value = FromWord("2C 04 DC 05 7F 00")) {
    CParlaneDataList values;
    std::transform(words.begin(), words.end(), std::back_inserter(values), FromWord);
    return {0x100, 0x01020304, 42,   CParlaneIEC870(kMonday), "Trip %k  ", std::move(value), "a  ", "b ",
            " ",   0x131,      "%u", std::move(values)};
}

CExtendedEventRecord MakeExtended(CCellList cells, std::uint16_t location = 0x131) {
    return {1,    0x01020304, 42,       CParlaneIEC870(kMonday), "T", nullptr, "a",
            "b ", "",         location, std::move(cells)};
}

void AddCell(CCellList& cells, const std::string& value, std::string label) {
    cells.push_back(CCellFactory::CreateWithDefaultLimits({}, FromWord(value).get(), std::move(label)));
}

CCellList MakeCells(std::vector<std::string> bitNames = {"one", "two"},
                    std::vector<std::string> texts = {"off", "on"}) {
    CCellList cells;
    AddCell(cells, "24 02 05 00", "State s");
    AddCell(cells, "20 01 02", "B");
    static_cast<CBinaryCell&>(*cells[1]).SetBitNames(std::move(bitNames));
    AddCell(cells, "50 01 01", "I");
    static_cast<CIndexedCell&>(*cells[2]).SetTexts(std::move(texts));
    AddCell(cells, "FF 00", "H");
    return cells;
}

/// A block in hex without its length.
Bytes Block(const std::string& tag, const std::string& body) {
    Bytes bytes = FromHex(tag + " 00 00 " + body);
    bytes[1] = static_cast<std::uint8_t>(bytes.size() - 3);
    return bytes;
}

Bytes Joined(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Bytes ExtendedBlocks(const std::string& cells) {
    return Joined(Block("00", "01 " + kExtendedBody), Block("01", "04 03 02 01 " + cells));
}

std::vector<unsigned> Codes(const CErrorList& errors) {
    std::vector<unsigned> codes;
    std::transform(errors.begin(), errors.end(), std::back_inserter(codes),
                   [](const auto& error) { return static_cast<const CEventError&>(*error).GetCode(); });
    return codes;
}

TEST(Record, IsWritten) {
    const auto simple = MakeSimple({"24 01 05", "FF 00"});
    const auto extended = MakeExtended(MakeCells());
    const Bytes block = Block("00", "00 " + kSimpleBody);
    EXPECT_EQ(extended.GetBlockSize() + extended.GetCellBlockSize() + 6, ExtendedBlocks(kCells).size());
    Bytes bytes;
    bytes.reserve(simple.GetImageSize() + extended.GetImageSize());
    const auto* const memory = bytes.data();
    simple.Clone()->Serialise(bytes);
    EXPECT_EQ(bytes.size(), simple.GetImageSize());
    extended.Clone()->Serialise(bytes);
    EXPECT_EQ(bytes, Joined(block, ExtendedBlocks(kCells)));
    EXPECT_EQ(bytes.data(), memory) << "images that fit are never moved";
}

TEST(Record, IsReadUpToEveryCut) {
    const Bytes body = FromHex(kSimpleBody);
    for (std::size_t cut = 0; cut <= body.size(); ++cut) {
        SCOPED_TRACE(cut);
        CErrorList errors;
        const CSimpleEventRecord record(std::span<const std::uint8_t>(body).first(cut), errors);
        const bool whole = cut == body.size() || cut == body.size() - 2 || cut == body.size() - 5;
        const unsigned code = cut == 15 || cut == 16 ? 3 : 0; // inside the event code
        EXPECT_EQ(record.IsValid(), whole);
        EXPECT_EQ(Codes(errors), whole ? std::vector<unsigned>() : std::vector{code});
        EXPECT_EQ(record.GetUniqueId(), cut < 4 ? 0U : 0x01020304U);
        EXPECT_EQ(record.GetTimeStamp(), cut < 13 ? CParlaneIEC870() : CParlaneIEC870(kMonday));
        EXPECT_EQ(record.GetAuxText1(), cut < 19 ? "" : "a");
        EXPECT_EQ(record.GetEventLocation(), cut < 24 ? 0 : 0x131);
        EXPECT_EQ(record.GetEventText(), whole ? "Trip 15.00kA" : "");
        EXPECT_EQ(record.GetValues().size(),
                  (cut > body.size() - 3 ? 1U : 0U) + (cut == body.size() ? 1U : 0U));
    }
    const Bytes cells = FromHex(kCells);
    const std::vector<std::size_t> ends{0, 13, 27, 34, 39};
    for (std::size_t cut = 0; cut <= cells.size(); ++cut) {
        CErrorList errors;
        CExtendedEventRecord record(1, FromHex(kExtendedBody), errors);
        record.ReadCells(std::span<const std::uint8_t>(cells).first(cut), errors);
        const auto end = std::upper_bound(ends.begin(), ends.end(), cut) - 1;
        EXPECT_EQ(record.IsValid(), *end == cut) << cut;
        EXPECT_EQ(errors.size(), *end == cut ? 0U : 1U) << cut;
        EXPECT_EQ(record.GetCells().size(), static_cast<std::size_t>(end - ends.begin())) << cut;
        Bytes bytes;
        record.Serialise(bytes);
        EXPECT_EQ(bytes, ExtendedBlocks(kCells.substr(0, *end * 3)));
    }
}

TEST(Record, OddItemsAreRead) {
    ForEachCase<4>("model/odd_records.txt", [](auto& body, auto& codes, auto& eventCode, auto& eventText) {
        CErrorList errors;
        const CExtendedEventRecord record(2, FromHex(kTime + body), errors);
        std::string found;
        for (const unsigned code : Codes(errors))
            found += (found.empty() ? "" : " ") + std::to_string(code);
        EXPECT_EQ(found, codes);
        EXPECT_EQ(record.IsValid(), codes.empty());
        EXPECT_EQ(record.GetEventCode(), std::stoul(eventCode));
        EXPECT_EQ(record.GetEventFormat(), eventText);
    });
    for (const char* noTime :
         {"04 03 02 01 24 01 05 00 00 01 2A", "04 03 02 01 3C 06 55 23 07 0D 25 02 00 00"}) {
        CErrorList errors;
        EXPECT_EQ(CSimpleEventRecord(FromHex(noTime), errors).GetTimeText(), "");
        EXPECT_EQ(Codes(errors), std::vector{4U});
    }
    CErrorList errors;
    CExtendedEventRecord record(1, FromHex(kExtendedBody), errors);
    EXPECT_EQ(record.GetEventValue()->GetTypeCode(), kTypeInvalid);
    record.ReadCells(FromHex("01 41 24 01 05 00 01 42 48 01 05 00 01 43 24 01 05 00"),
                     errors); // the second is a reply
    EXPECT_TRUE(record.GetCells().size() == 1 && errors.empty() && !record.IsValid());
}

/// Where an operation stands in the table of its class's virtual operations; the destructor is number 0.
template <class TOperation>
std::size_t SlotOf(TOperation operation) {
    std::size_t offset = 0; // the first word of the pointer; the destructor has two entries
    std::memcpy(&offset, &operation, sizeof offset);
    return offset / sizeof(void*) - 1;
}
template <class... TOperations>
void ExpectSlots(std::size_t first, TOperations... operations) {
    std::vector<std::size_t> want(sizeof...(operations));
    std::iota(want.begin(), want.end(), first);
    EXPECT_EQ(std::vector{SlotOf(operations)...}, want);
}

TEST(VirtualOperations, KeepTheirOrder) {
    using D = CParlaneData;
    ExpectSlots(1, &D::GetWireBytes, &D::GetSize, &D::Clone, &D::CreateMinimum, &D::CreateMaximum,
                &D::CreateStep, &D::GetUnsigned, &D::GetFloat);
    using C = CCell;
    ExpectSlots(1, &C::GetText, &C::GetRawText, &C::GetLabelText, &C::GetValueText, &C::IsCompatible,
                static_cast<const D* (C::*)() const>(&C::GetValue), static_cast<D* (C::*)()>(&C::GetValue),
                &C::GetMinimum, &C::GetMaximum, &C::GetStep, &C::Clone, &C::Validate, &C::Format);
    using S = CStringCell;
    ExpectSlots(14, &S::GetTextValue, &S::GetMinimumCode, &S::GetMaximumCode, &S::GetStepCode,
                &S::GetFixedLength, &S::IsCharAllowed, &S::IsTextAllowed, &S::SetTextValue,
                &CTextCell::ClampText);
    ExpectSlots(14, &CNumericCell::GetMinimumNumber, &CNumericCell::GetMaximumNumber);
    ExpectSlots(14, &CBinaryCell::GetBitListText);
    using R = CEventRecord;
    ExpectSlots(1, &R::Clone, &R::GetText, &R::Serialise, &R::GetBlockSize, &R::WriteBlock,
                &CExtendedEventRecord::GetCellBlockSize, &CExtendedEventRecord::WriteCellBlock);
    using E = IError;
    ExpectSlots(1, &E::HasLog, &E::HasMessage, &E::GetLogText, &E::GetMessageText, &E::GetStatusCode,
                &E::Clone);
}

/// A record that is written longer than it says.
struct CUnderstated final : CSimpleEventRecord {
    using CSimpleEventRecord::CSimpleEventRecord;
    std::size_t GetBlockSize() const override { return CSimpleEventRecord::GetBlockSize() - 1; }
};

/// What keeps the record from being written; "" when it is.
std::string Fault(const CEventRecord& record) {
    Bytes bytes{9};
    try {
        record.Serialise(bytes);
    } catch (const std::logic_error& fault) {
        EXPECT_EQ(bytes, Bytes{9});
        return fault.what();
    }
    return "";
}

TEST(Record, GivesUpWhatCannotBeWritten) {
    EXPECT_EQ(Fault(CUnderstated(0, 0, 0, {}, "", nullptr, "", "", "", 0, "", {})),
              "an event block is larger than its stated size");
    const std::string cell = "a cell's value is too long or its index selects no text (position 2)";
    EXPECT_EQ(Fault(MakeExtended(MakeCells({}, {"off", std::string(256, 'x')}))), cell);
    EXPECT_EQ(MakeExtended(MakeCells({}, {"off", std::string(255, 'x')})).DropUnwritable().count, 0U);
    auto extended = MakeExtended(MakeCells({"one", "two"}, {"off"}));
    EXPECT_EQ(Fault(extended), cell);
    const std::size_t announced = extended.GetImageSize();
    SDroppedItems dropped = extended.DropUnwritable();
    EXPECT_EQ(dropped.count, 1U);
    EXPECT_EQ(announced, extended.GetBlockSize() + extended.GetCellBlockSize() + 6)
        << "as it is written then";
    EXPECT_EQ(extended.GetImageSize(), announced);
    EXPECT_EQ(dropped.first, "the value of cell 3 (I)");
    EXPECT_EQ(Fault(extended), "");
    EXPECT_EQ(extended.GetCells()[2]->GetValue(), nullptr);

    auto simple = MakeSimple({"u1", "s256"}, FromWord("s256"));
    EXPECT_EQ(Fault(simple), "a value of the record is too long (position 1)");
    EXPECT_EQ(Fault(MakeSimple({}, FromWord("s256"))), "the event value is too long");
    dropped = simple.DropUnwritable();
    EXPECT_EQ(dropped.count, 2U);
    EXPECT_EQ(dropped.first, "the event value");
    EXPECT_EQ(Fault(simple), "");
    EXPECT_EQ(simple.GetValues().size(), 2U) << "the others keep their places";
    EXPECT_EQ(MakeSimple({"u1", "s256"}).DropUnwritable().first, "value 2");

    auto large = MakeSimple(std::vector<const char*>(256, "s255"), nullptr);
    EXPECT_EQ(Fault(large), "the event block is too long");
    dropped = large.DropUnwritable();
    EXPECT_EQ(dropped.count, 2U); // one less would still be 65562 bytes
    EXPECT_EQ(dropped.first, "value 255");
    EXPECT_EQ(Fault(large), "");

    CCellList cells;
    std::generate_n(std::back_inserter(cells), 128, [] {
        return CCellFactory::CreateWithDefaultLimits({}, FromWord("s255").get(), std::string(300, 'l'));
    });
    auto wide = MakeExtended(std::move(cells));
    EXPECT_EQ(Fault(wide), "the cells are too long for a block");
    EXPECT_EQ(wide.DropUnwritable().first, "cell 128");
    EXPECT_EQ(Fault(wide), "");
    EXPECT_EQ(MakeExtended(MakeCells(std::vector<std::string>(300, "n"))).GetCellBlockSize(),
              4U + 39 - 8 + 255 * 2);
}

TEST(Record, Texts) {
    EXPECT_EQ(MakeSimple({}, FromWord("u5")).GetEventText(), "????");
    EXPECT_EQ(MakeSimple({}, nullptr).GetEventText(), "Trip 0");
    EXPECT_EQ(MakeSimple({"u5"}).GetText() + MakeSimple({}).GetText(), "50"); // what was made, value or not
    EXPECT_EQ(MakeSimple({}).GetTimeText(), "Monday 05 February 2024 13:07:09.045 GMT");
    const CParlaneIEC870 longest(CParlaneIEC870::Octets{0x55, 0x23, 7, 13, 0x65, 9, 24});
    const std::string letters(300, 'x'), cut(255, 'x');
    const CSimpleEventRecord full(0, 0, 0, longest, letters, nullptr, "", "", "", 0, letters, {});
    EXPECT_EQ(full.GetTimeText(), "Wednesday 05 September 2024 13:07:09.045 GMT");
    EXPECT_EQ(full.GetEventText() + full.GetText(), cut + cut);
    EXPECT_EQ(CSimpleEventRecord(0, 0, 0, {}, letters, FromWord("u5"), "", "", "", 0, "", {}).GetEventText(),
              cut);
    EXPECT_EQ(MakeExtended(MakeCells(), 0x5F).GetText(), "State s\nB\n  OFF 480  one\n  ON  481  two\nI\n\n");
    CCellList continued = MakeCells();
    AddCell(continued, "u5", "one\x14");
    AddCell(continued, "u5", "two\n");
    EXPECT_EQ(MakeExtended(std::move(continued)).GetText(), "State s\nB\nI\n\none\x14two\n");
    EXPECT_EQ(CEventList().GetInfoText(2), "unknown");
    EXPECT_EQ(CEventList().GetInfoText(0) + CEventList().GetInfoText(1), "unknownunknown");
}

TEST(Record, DisplayTexts) {
    ForEachCase<3>("model/display_texts.txt", [](auto& text, auto& line, auto& lines) {
        const std::string more = text + "z"; // nothing behind the text counts
        const std::string_view part(more.data(), text.size());
        CDisplayLayout layout;
        layout.Write(part);
        EXPECT_EQ(CleanDisplayLine(part), line);
        EXPECT_EQ(layout.GetText(), lines);
    });
    CDisplayLayout hostile;
    for (int i = 0; i < 20000; ++i)
        hostile.Write("xx\ny");
    hostile.Write("\r" + std::string(300000, 'x'));
    EXPECT_EQ(hostile.GetText().size(), 256U * 1024 + 20000) << "the ends of lines are not counted";
}

TEST(Record, LocationClasses) {
    std::istringstream cases(
        "20 20 21 21 22 22 23 23 30 20 31 30 3F 30 40 21 41 40 4F 40 50 22 51 50 5A 50 60 23 61 60 "
        "6F 60 100 100 155 100 1FF 100 DF DF FFFB FFFB FFFC FFFC FFFD FFFD 0 0 1F 0 24 0 2F 0 "
        "70 0 DE 0 E0 0 200 0 1131 0 FFFA 0 FFFE 0");
    for (std::uint16_t location = 0, want = 0; cases >> std::hex >> location >> want;) {
        EXPECT_EQ(ClassifyEventLocation(location), want) << location;
        EXPECT_EQ(ListsBits(location), want >= 0x30 && want <= 0x60) << location;
    }
}

} // namespace
} // namespace ruvo
