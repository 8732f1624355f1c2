// The binary form of event records: primitives of writing, and why a record may not be written.
// Little-endian.
#pragma once

#include "model/records/block_layout.h"
#include "model/values/parlane_data.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>

namespace ruvo {

/// Which item keeps a record from being written.
enum class EUnwritable : std::uint8_t {
    EventValue, ///< the event value is too long
    Value,      ///< a simple record's value at the position is too long
    Cell,       ///< the cell at the position: its value is too long, or its index selects no text
    EventBlock, ///< no one item, the first block is too long
    CellBlock,  ///< no one item, the cells together are too long
};

/// A record that has no binary form; the text says what keeps it back. Position counts values or cells from 0
/// and is empty when no single one is at fault. The record's DropUnwritable drops it.
class CUnwritableRecord : public std::invalid_argument {
public:
    CUnwritableRecord(EUnwritable item, std::optional<std::size_t> position);
};

/// Bytes that a tagged value takes; those of its head for none (null).
[[nodiscard]] std::size_t StoredValueSize(const CParlaneData* value);

/// Writes primitives into a borrowed buffer of the size that the sizes above add up to. Writing past its end
/// is an error of the caller and throws std::length_error before anything is written there.
class CBlockWriter {
public:
    explicit CBlockWriter(std::span<std::uint8_t> buffer) : m_rest(buffer) {}

    void WriteByte(std::uint8_t value) { WriteLittleEndian(value, kByteSize); }
    void WriteWord(std::uint16_t value) { WriteLittleEndian(value, kWordSize); }
    void WriteLong(std::uint32_t value) { WriteLittleEndian(value, kLongSize); }
    /// A length byte and the bytes of the text as they are, cut to 255.
    void WriteText(std::string_view text);
    /// Type code, length byte and data; FF 00 for none (null). The data must be 255 bytes or fewer.
    void WriteValue(const CParlaneData* value);
    /// A text as a Text value holds it: in the relay's own character set.
    void WriteTextValue(std::string_view text);
    void WriteBlockHead(EBlockTag tag, std::size_t blockSize);

private:
    [[nodiscard]] std::span<std::uint8_t> Take(std::size_t count) {
        if (count > m_rest.size()) {
            ThrowPastEnd();
        }
        const std::span<std::uint8_t> taken = m_rest.first(count);
        m_rest = m_rest.subspan(count);
        return taken;
    }
    void WriteLittleEndian(std::uint32_t value, std::size_t size) {
        for (std::uint8_t& byte : Take(size)) {
            byte = static_cast<std::uint8_t>(value & 0xFFU);
            value >>= 8U;
        }
    }
    [[noreturn]] static void ThrowPastEnd();
    void WriteValueHead(std::uint32_t typeCode, std::size_t size);

    std::span<std::uint8_t> m_rest;
};

} // namespace ruvo
