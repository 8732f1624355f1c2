// The layout of event records in day files: block tags, the items of each block in order, their sizes, and
// the codes of what keeps a block from being read. The writer, the reader and the parser take them from here,
// and docs/day-file-format.md is held against this file by a test. Day files are kept for years: nothing here
// may change. Numbers are little-endian.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace ruvo {

/// First byte of a block.
enum class EBlockTag : std::uint8_t { Event = 0, Cells = 1 };

/// Codes of a CEventError.
enum class EEventError : unsigned { PastEnd = 0, BadEventCode = 3, NoTimeStamp = 4 };

/// How an item is written.
enum class EItemEncoding : std::uint8_t {
    Byte,
    Word,        ///< 16 bits
    Long,        ///< 32 bits
    Text,        ///< a length byte and that many bytes
    ShortNumber, ///< a length byte and that many bytes, of which only the last may be other than 0
    Value,       ///< a type code, a length byte and that many bytes
};

inline constexpr std::size_t kByteSize = 1;
inline constexpr std::size_t kWordSize = 2;
inline constexpr std::size_t kLongSize = 4;
inline constexpr std::size_t kLengthSize = kByteSize;
inline constexpr std::size_t kValueHeadSize = kByteSize + kLengthSize;
inline constexpr std::size_t kBlockHeadSize = kByteSize + kWordSize; ///< tag and length word
inline constexpr std::size_t kRecordNumberSize = kByteSize;
inline constexpr std::size_t kUniqueIdSize = kLongSize;
inline constexpr std::size_t kBitCountSize = kByteSize;
inline constexpr std::size_t kEventCodeSize = kByteSize; ///< of the short number that is written
/// Milliseconds within the minute, then minute, hour, day, month and year.
inline constexpr std::size_t kTimeStampSize = kWordSize + 5 * kByteSize;

inline constexpr std::size_t kMaxStoredText = 0xFF;  ///< a longer text is cut
inline constexpr std::size_t kMaxStoredData = 0xFF;  ///< a longer value cannot be written
inline constexpr std::size_t kMaxBlockSize = 0xFFFF; ///< bytes after the length word

/// One item of a block: what it is, how it is written, and the bytes of data that it always has.
struct SBlockItem {
    std::string_view name;
    EItemEncoding encoding;
    std::size_t dataSize = 0; ///< after a length byte; 0 where the length may be any
};

/// Size of an item whose text or value is empty, unless it is always of one size.
[[nodiscard]] constexpr std::size_t MinimumSize(const SBlockItem& item) {
    switch (item.encoding) {
    case EItemEncoding::Word:
        return kWordSize;
    case EItemEncoding::Long:
        return kLongSize;
    case EItemEncoding::Value:
        return kValueHeadSize + item.dataSize;
    default:
        return kByteSize + item.dataSize;
    }
}

[[nodiscard]] constexpr std::size_t MinimumSize(std::span<const SBlockItem> items) {
    std::size_t size = 0;
    for (const SBlockItem& item : items) {
        size += MinimumSize(item);
    }
    return size;
}

/// After the head of every record's first block. A simple record goes on with its format text and values, an
/// extended one with one empty text.
inline constexpr std::array kEventItems{
    SBlockItem{"record number", EItemEncoding::Byte},
    SBlockItem{"unique id", EItemEncoding::Long},
    SBlockItem{"timestamp", EItemEncoding::Value, kTimeStampSize},
    SBlockItem{"reserved byte", EItemEncoding::Byte},
    SBlockItem{"reserved text", EItemEncoding::Text},
    SBlockItem{"event code", EItemEncoding::ShortNumber, kEventCodeSize},
    SBlockItem{"plant reference", EItemEncoding::Text},
    SBlockItem{"description", EItemEncoding::Text},
    SBlockItem{"model", EItemEncoding::Text},
    SBlockItem{"menu location", EItemEncoding::Word},
    SBlockItem{"event text", EItemEncoding::Text},
    SBlockItem{"event value", EItemEncoding::Value},
};
/// A cell of an extended record's second block, which begins with the record's unique id; the names of the
/// bits follow as texts.
inline constexpr std::array kCellItems{
    SBlockItem{"label template", EItemEncoding::Text},
    SBlockItem{"value", EItemEncoding::Value},
    SBlockItem{"count of bit names", EItemEncoding::Byte},
};

/// Positions in kEventItems.
inline constexpr std::size_t kUniqueIdItem = 1;
inline constexpr std::size_t kTimeStampItem = 2;
inline constexpr std::size_t kReservedTextItem = 4;
inline constexpr std::size_t kEventValueItem = kEventItems.size() - 1;

/// Of a first block, after its head, whose four texts and event value are empty.
inline constexpr std::size_t kMinEventSize = MinimumSize(kEventItems);
/// Of a cell whose label template and value are empty.
inline constexpr std::size_t kMinCellSize = MinimumSize(kCellItems);

/// Where an item begins, after the block's head. Up to the reserved text it is always there.
[[nodiscard]] constexpr std::size_t EventItemOffset(std::size_t item) {
    return MinimumSize(std::span(kEventItems).first(item));
}

/// Bytes that a text takes, its length byte included.
[[nodiscard]] constexpr std::size_t StoredTextSize(std::string_view text) {
    return kLengthSize + (text.size() < kMaxStoredText ? text.size() : kMaxStoredText);
}

} // namespace ruvo
