// Event blocks. Input: the bytes of a record; the same bytes again as the parts that a record is built from.
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"

#include "dayfile/block_parser.h"
#include "model/cells/cell_factory.h"

namespace ruvo::fuzz {

namespace {

using Bytes = std::span<const std::uint8_t>;
using Image = std::vector<std::uint8_t>;

Image Serialised(const CEventRecord& record) {
    Image bytes{0xEE};
    record.Serialise(bytes);
    Require(bytes.front() == 0xEE, "a record is appended");
    bytes.erase(bytes.begin());
    return bytes;
}

void RequireSameTexts(const CEventRecord& left, const CEventRecord& right) {
    Require(left.GetText() == right.GetText() && left.GetEventText() == right.GetEventText() &&
                left.GetTimeText() == right.GetTimeText(),
            "equal records read alike");
}

/// What a record becomes in a file is sound, and the same record again.
void CheckRoundTrip(const CEventRecord& record) {
    const Image image = Serialised(record);
    Require(image.size() <= kMaxRecordImage, "a record has a longest image");
    const SParsedRecord parsed = ParseDayFileRecord(image);
    Require(parsed.record != nullptr, "a written record is sound");
    Require(parsed.size == image.size() && !parsed.unknownValues, "a written record is read as a whole");
    Require(Serialised(*parsed.record) == image, "a written record reads back equal");
    Require(LooksLikeRecord(image) && LooksLikeBlock(image), "every sound record looks like one");
    // A second pass gives the same texts; the first may cut what was too long for a file.
    RequireSameTexts(*ParseDayFileRecord(image).record, *parsed.record);
}

/// Nothing of the record's items is lost but what the reserved ones hold and how its numbers are padded.
void CheckSameItems(Bytes bytes, const SParsedRecord& parsed) {
    const Image image = Serialised(*parsed.record);
    constexpr std::size_t kThroughTime = kBlockHeadSize + EventItemOffset(kTimeStampItem + 1);
    Require(image.size() <= parsed.size, "reading adds nothing");
    Require(std::ranges::equal(Bytes(image).subspan(kBlockHeadSize, kThroughTime - kBlockHeadSize),
                               bytes.subspan(kBlockHeadSize, kThroughTime - kBlockHeadSize)),
            "number, id and time stay as they are");
    constexpr std::size_t kPlain = kThroughTime + 2 + 2; // reserved byte and text, the event code
    if (image.size() == parsed.size && bytes[kThroughTime + 1] == 0 && bytes[kThroughTime + 2] == 1) {
        Require(
            std::ranges::equal(Bytes(image).subspan(kPlain), bytes.subspan(kPlain, image.size() - kPlain)),
            "decoding and encoding gives the same bytes");
    }
}

void CheckParsing(Bytes bytes) {
    const SParsedRecord parsed = ParseDayFileRecord(bytes);
    if (parsed.record == nullptr) {
        Require(!DayFileFaultText(parsed.fault).empty(), "a fault has a text");
        Require(!parsed.isFirstBlockSound || LooksLikeBlock(bytes), "every sound block looks like one");
        return;
    }
    Require(parsed.size <= bytes.size() && parsed.size <= kMaxRecordImage, "a record lies within its bytes");
    Require(parsed.isFirstBlockSound && parsed.record->IsValid(), "a sound record has a sound block");
    Require(LooksLikeRecord(bytes.first(parsed.size)) && LooksLikeBlock(bytes),
            "every sound record looks like one");
    Require(ParseCost(bytes) >= parsed.size, "parsing is paid for");
    if (parsed.unknownValues) {
        Require(parsed.unknownValues->length >= 2 &&
                    parsed.unknownValues->offset + parsed.unknownValues->length <= parsed.size,
                "an unknown value lies within its record");
    } else {
        CheckSameItems(bytes, parsed);
    }
    // With less behind it the record is the same; with one byte less it is none.
    Require(ParseDayFileRecord(bytes.first(parsed.size)).record != nullptr, "a record needs no other bytes");
    Require(ParseDayFileRecord(bytes.first(parsed.size - 1)).record == nullptr, "a torn record is none");
    RequireSameTexts(*parsed.record->Clone(), *parsed.record);
    CheckRoundTrip(*parsed.record);
}

CCellList TakeCells(CInput& input) {
    CCellList cells;
    while (!input.IsEmpty()) {
        std::string label = input.TakeText();
        const auto value = input.TakeValue();
        if (auto cell = CCellFactory::CreateWithDefaultLimits(CCellID(), value.get(), std::move(label))) {
            cells.push_back(std::move(cell));
        }
    }
    return cells;
}

template <class TRecord>
void CheckBuilt(TRecord record) {
    try {
        Serialised(record);
    } catch (const CUnwritableRecord&) {
        const SDroppedItems dropped = record.DropUnwritable();
        Require(dropped.count > 0 && !dropped.first.empty(), "what was left out is told");
    }
    CheckRoundTrip(record);
    Require(record.DropUnwritable().count == 0, "a record that can be written keeps everything");
}

void CheckBuilding(CInput input) {
    const unsigned kind = input.TakeByte();
    const std::uint32_t id = input.TakeLong();
    CParlaneIEC870::Octets time{};
    std::ranges::copy(input.TakeBytes(time.size()), time.begin());
    const std::uint16_t location = input.TakeWord();
    std::array<std::string, 4> texts;
    for (std::string& text : texts) {
        text = input.TakeText();
        text.append((kind & 2U) != 0 ? 200 : 0, 'x'); // longer than a block can hold
    }
    auto value = input.TakeValue();
    if ((kind & 1U) != 0) {
        CheckBuilt(CExtendedEventRecord(1 + id % 2, id, 5, CParlaneIEC870(time), texts[0], std::move(value),
                                        texts[1], texts[2], texts[3], location, TakeCells(input)));
        return;
    }
    std::string format = input.TakeText();
    CParlaneDataList values;
    while (!input.IsEmpty()) {
        values.push_back(input.TakeValue());
    }
    CheckBuilt(CSimpleEventRecord(0, id, 5, CParlaneIEC870(time), texts[0], std::move(value), texts[1],
                                  texts[2], texts[3], location, std::move(format), std::move(values)));
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::CheckParsing({data, size});
    ruvo::fuzz::CheckBuilding(ruvo::fuzz::CInput({data, size}));
    return 0;
}
