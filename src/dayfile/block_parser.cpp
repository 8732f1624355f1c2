#include "dayfile/block_parser.h"

#include "base/byte_cursor.h"
#include "dayfile/block_walk.h"
#include "model/cells/binary_cell.h"
#include "model/values/type_codes.h"

#include <algorithm>
#include <vector>

namespace ruvo {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::array<std::string_view, static_cast<std::size_t>(EDayFileFault::Last) + 1> kFaultTexts{
    "the header has no end byte",
    "the header is not that of an event list",
    "no block begins here",
    "the block is longer than the rest of the file",
    "an item passes the end of its block",
    "the event code is not a valid number",
    "the timestamp is missing",
    "bytes are left over at the end of the block",
    "the record's cells are missing",
    "the cells belong to another record",
    "a cell cannot be read",
    "cells without their record",
    "a value's type or size is not known",
    "the record is torn: another one begins within it",
    "the file cannot be read further",
};
static_assert(!kFaultTexts.back().empty(), "one text per fault");

/// Offset of the timestamp's type code from the block's tag.
constexpr std::size_t kTimeStampAt = kBlockHeadSize + EventItemOffset(kTimeStampItem);
/// Where a record's items begin, after its record number.
constexpr std::size_t kItemsAt = kRecordNumberSize;

bool IsBlockTag(std::uint8_t byte, EBlockTag tag) {
    return byte == static_cast<std::uint8_t>(tag);
}

struct SBlock {
    std::uint8_t tag = 0;
    Bytes body;
    std::size_t Size() const { return kBlockHeadSize + body.size(); }
};

std::optional<EDayFileFault> TakeBlock(CByteCursor& cursor, SBlock& block) {
    std::uint16_t length = 0;
    if (!cursor.TakeByte(block.tag) || block.tag > static_cast<std::uint8_t>(EBlockTag::Cells)) {
        return EDayFileFault::NoBlock;
    }
    if (!cursor.TakeWord(length) || !cursor.TakeBytes(length, block.body)) {
        return EDayFileFault::BlockPastEnd;
    }
    return std::nullopt;
}

/// What the record's constructor reported, as a fault; none when the record is sound.
std::optional<EDayFileFault> FaultOf(const CEventRecord& record, const CErrorList& errors) {
    struct SRow {
        EEventError eventError;
        EDayFileFault fault;
    };
    static constexpr std::array kRows{SRow{EEventError::PastEnd, EDayFileFault::ItemPastEnd},
                                      SRow{EEventError::BadEventCode, EDayFileFault::BadEventCode},
                                      SRow{EEventError::NoTimeStamp, EDayFileFault::NoTimeStamp}};
    for (const auto& error : errors) {
        const auto* const eventError = dynamic_cast<const CEventError*>(error.get());
        for (const SRow& row : kRows) {
            if (eventError != nullptr && eventError->GetCode() == static_cast<unsigned>(row.eventError)) {
                return row.fault;
            }
        }
    }
    return record.IsValid() && errors.empty() ? std::nullopt : std::optional(EDayFileFault::BadCell);
}

bool HasNullValue(const CSimpleEventRecord& record) {
    return record.GetEventValue() == nullptr ||
           std::count(record.GetValues().begin(), record.GetValues().end(), nullptr) > 0;
}

/// True when the record that was read from the body holds every byte of its values, which are at the end.
bool HoldsAllValues(const CSimpleEventRecord& record, Bytes body) {
    if (HasNullValue(record) || record.GetBlockSize() != kItemsAt + body.size()) {
        return false;
    }
    const CParlaneDataList& values = record.GetValues();
    std::size_t at = body.size();
    for (auto value = values.rbegin(); value != values.rend(); ++value) {
        at -= StoredValueSize(value->get());
        if (!IsStoredThere(value->get(), body.subspan(at))) {
            return false;
        }
    }
    at -= StoredTextSize(record.GetFormatText()) + StoredValueSize(record.GetEventValue());
    return IsStoredThere(record.GetEventValue(), body.subspan(at));
}

/// The body with an unknown type at each of those places.
std::vector<std::uint8_t> WithoutTypes(Bytes body, const std::vector<std::size_t>& places) {
    std::vector<std::uint8_t> changed(body.begin(), body.end());
    for (const std::size_t at : places) {
        changed[at] = 0;
    }
    return changed;
}

/// Takes over what the walk over the first block saw; offsets then count from the block's tag.
void NoteUnknown(const SBlockWalk& walk, SParsedRecord& parsed) {
    parsed.unknownValues = walk.UnknownRange();
    if (parsed.unknownValues) {
        parsed.unknownValues->offset += kBlockHeadSize + kItemsAt;
    }
}

std::optional<EDayFileFault> ReadSimple(Bytes body, SParsedRecord& parsed) {
    CErrorList errors;
    auto record = std::make_unique<CSimpleEventRecord>(body, errors);
    if (const auto fault = FaultOf(*record, errors)) {
        return fault;
    }
    // Nearly all records are as they were written; only the others are worth a second look.
    if (!HoldsAllValues(*record, body)) {
        const SBlockWalk walk = WalkEventItems(body, false);
        NoteUnknown(walk, parsed);
        record = std::make_unique<CSimpleEventRecord>(WithoutTypes(body, walk.unknownAt), errors);
    }
    parsed.isFirstBlockSound = true;
    parsed.record = std::move(record);
    return std::nullopt;
}

/// False when the cells do not hold all of the bytes (names of bits that they do not have, data that
/// their type does not keep), or are of a kind that is never stored: their type codes are not those written.
bool HoldsAllBytes(const CCellList& cells, Bytes body) {
    std::size_t at = 0;
    for (const auto& cell : cells) {
        at += StoredTextSize(cell->GetLabelTemplate());
        if (cell->GetKind() == ECellKind::Indexed || at > body.size() ||
            !IsStoredThere(cell->GetValue(), body.subspan(at))) {
            return false;
        }
        at += StoredValueSize(cell->GetValue()) + kBitCountSize;
        if (cell->GetKind() == ECellKind::Binary) {
            for (const std::string& name : static_cast<const CBinaryCell&>(*cell).GetBitNames()) {
                at += StoredTextSize(name);
            }
        }
    }
    return at == body.size();
}

std::optional<EDayFileFault> ReadCells(CByteCursor& cursor, CExtendedEventRecord& record,
                                       SParsedRecord& parsed) {
    SBlock block;
    const auto fault = TakeBlock(cursor, block);
    if (fault == EDayFileFault::BlockPastEnd && IsBlockTag(block.tag, EBlockTag::Cells)) {
        return fault;
    }
    if (fault || !IsBlockTag(block.tag, EBlockTag::Cells)) {
        return EDayFileFault::CellsMissing;
    }
    CByteCursor body(block.body);
    std::uint32_t uniqueId = 0;
    if (!body.TakeDoubleWord(uniqueId)) {
        return EDayFileFault::ItemPastEnd;
    }
    if (uniqueId != record.GetUniqueId()) {
        return EDayFileFault::CellsOfAnother;
    }
    CErrorList errors;
    record.ReadCells(block.body.subspan(kUniqueIdSize), errors);
    if (const auto unread = FaultOf(record, errors)) {
        return unread;
    }
    if (!HoldsAllBytes(record.GetCells(), block.body.subspan(kUniqueIdSize))) {
        return EDayFileFault::BadCell;
    }
    parsed.size += block.Size();
    return std::nullopt;
}

std::optional<EDayFileFault> ReadExtended(std::uint8_t recordNumber, Bytes body, CByteCursor& rest,
                                          SParsedRecord& parsed) {
    CErrorList errors;
    auto record = std::make_unique<CExtendedEventRecord>(recordNumber, body, errors);
    if (const auto fault = FaultOf(*record, errors)) {
        return fault;
    }
    const SBlockWalk walk = WalkEventItems(body, true);
    if (walk.leftOver > 0) {
        return EDayFileFault::BytesLeftOver;
    }
    parsed.isFirstBlockSound = true;
    if (!walk.unknownAt.empty()) {
        record =
            std::make_unique<CExtendedEventRecord>(recordNumber, WithoutTypes(body, walk.unknownAt), errors);
    }
    if (const auto fault = ReadCells(rest, *record, parsed)) {
        return fault;
    }
    NoteUnknown(walk, parsed);
    parsed.record = std::move(record);
    parsed.isExtended = true;
    return std::nullopt;
}

/// A short number of no bytes would read as 0, but is never written: it is a length that was changed.
bool HasEmptyEventCode(Bytes items) {
    CByteCursor cursor(items);
    std::uint8_t length = 0;
    constexpr std::size_t kReservedTextAt = EventItemOffset(kReservedTextItem) - kItemsAt;
    return SkipBytes(cursor, kReservedTextAt) && SkipCounted(cursor) && cursor.TakeByte(length) &&
           length == 0;
}

std::optional<EDayFileFault> ReadRecord(Bytes bytes, SParsedRecord& parsed) {
    CByteCursor cursor(bytes);
    SBlock block;
    if (const auto fault = TakeBlock(cursor, block)) {
        return fault;
    }
    if (IsBlockTag(block.tag, EBlockTag::Cells)) {
        return EDayFileFault::CellsAlone;
    }
    parsed.size = block.Size();
    CByteCursor body(block.body);
    std::uint8_t recordNumber = 0;
    if (!body.TakeByte(recordNumber)) {
        return EDayFileFault::ItemPastEnd;
    }
    const Bytes items = block.body.subspan(kItemsAt);
    if (HasEmptyEventCode(items)) {
        return EDayFileFault::BadEventCode;
    }
    return recordNumber == 0 ? ReadSimple(items, parsed) : ReadExtended(recordNumber, items, cursor, parsed);
}

/// Size of the block that begins there by its length word, whether it fits or not; 0 without a whole head.
std::size_t ClaimedSize(Bytes bytes) {
    CByteCursor cursor(bytes);
    std::uint8_t tag = 0;
    std::uint16_t length = 0;
    return cursor.TakeByte(tag) && cursor.TakeWord(length) ? kBlockHeadSize + length : 0;
}

bool HasTimeStampHead(Bytes block) {
    return block.size() >= kTimeStampAt + kValueHeadSize && block[kTimeStampAt] == kTypeIEC870 &&
           block[kTimeStampAt + kByteSize] == kTimeStampSize;
}

} // namespace

std::string_view DayFileFaultText(EDayFileFault fault) {
    return kFaultTexts.at(static_cast<std::size_t>(fault));
}

SParsedRecord ParseDayFileRecord(std::span<const std::uint8_t> bytes) {
    SParsedRecord parsed;
    if (const auto fault = ReadRecord(bytes, parsed)) {
        parsed.fault = *fault;
        parsed.record.reset();
    }
    return parsed;
}

bool LooksLikeBlock(std::span<const std::uint8_t> bytes) {
    const std::size_t size = ClaimedSize(bytes);
    return size >= kBlockHeadSize + kMinEventSize + StoredTextSize({}) && size <= bytes.size() &&
           IsBlockTag(bytes[0], EBlockTag::Event) && HasTimeStampHead(bytes);
}

bool LooksLikeRecord(std::span<const std::uint8_t> bytes) {
    if (!LooksLikeBlock(bytes)) {
        return false;
    }
    const Bytes behind = bytes.subspan(ClaimedSize(bytes));
    const bool isExtended = bytes[kBlockHeadSize] != 0;
    if (isExtended) {
        return !behind.empty() && IsBlockTag(behind[0], EBlockTag::Cells);
    }
    return behind.empty() || (IsBlockTag(behind[0], EBlockTag::Event) && HasTimeStampHead(behind));
}

std::size_t ParseCost(std::span<const std::uint8_t> bytes) {
    const std::size_t first = ClaimedSize(bytes);
    const bool isExtended = first > kBlockHeadSize && first < bytes.size() && bytes[kBlockHeadSize] != 0;
    return first + (isExtended ? ClaimedSize(bytes.subspan(first)) : 0);
}

} // namespace ruvo
