// One record of a day file, from untrusted bytes: what makes it sound, and what is wrong when it is not.
// docs/day-file-format.md describes the rule in words.
#pragma once

#include "dayfile/block_walk.h"
#include "model/records/event_block.h"
#include "model/records/event_record.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace ruvo {

/// Why a place of a day file is no sound header or record.
enum class EDayFileFault : std::uint8_t {
    NoHeaderEnd,
    BadHeader,
    NoBlock,
    BlockPastEnd,
    ItemPastEnd,
    BadEventCode,
    NoTimeStamp,
    BytesLeftOver,
    CellsMissing,
    CellsOfAnother,
    BadCell,
    CellsAlone,
    UnknownValue,
    RecordWithin,
    ReadFailed,
    Last = ReadFailed,
};

/// A reason for people: "the block is longer than the rest of the file".
[[nodiscard]] std::string_view DayFileFaultText(EDayFileFault fault);

/// The longest image of a record: two blocks.
inline constexpr std::size_t kMaxRecordImage = 2 * (kBlockHeadSize + kMaxBlockSize);

/// What the bytes hold at their start: a record and its size, or a fault and no record.
struct SParsedRecord {
    std::unique_ptr<CEventRecord> record;
    bool isExtended = false;
    std::size_t size = 0; ///< of the whole image
    /// Also for a record that fails by its cells alone.
    bool isFirstBlockSound = false;
    EDayFileFault fault = EDayFileFault::NoBlock;
    /// From the first to the last value of an unknown type or size. The record holds no value there. A value
    /// counts as known only if writing it again yields the same bytes.
    std::optional<SByteRange> unknownValues;
};

/// Parses the record at the start of the bytes, which hold kMaxRecordImage bytes or all that the file has
/// left.
[[nodiscard]] SParsedRecord ParseDayFileRecord(std::span<const std::uint8_t> bytes);

/// True when the bytes begin like a record's first block. Looks at a few bytes only; every sound block
/// passes.
[[nodiscard]] bool LooksLikeBlock(std::span<const std::uint8_t> bytes);

/// True when the bytes begin like a record, and after its first block like what may follow it. Looks at a
/// few bytes at fixed places only; every sound record passes.
[[nodiscard]] bool LooksLikeRecord(std::span<const std::uint8_t> bytes);

/// Bytes that parsing the record there may have to read at most; 0 when there is none to parse.
[[nodiscard]] std::size_t ParseCost(std::span<const std::uint8_t> bytes);

} // namespace ruvo
