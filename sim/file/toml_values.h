// Relay values as a substation file writes them: { uint = 5, size = 2 }, "a text", { type = 0x24, bytes =
// "05" }.
#pragma once

#include "link/seam/variant.h"
#include "sim/file/substation.h"
#include "sim/file/table_reader.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ruvo::sim {

/// Type codes of relay values that the simulator itself looks at.
inline constexpr std::uint8_t kTextType = 0x18;
inline constexpr std::uint8_t kPasswordType = 0x1C;
inline constexpr std::uint8_t kUintType = 0x24;
inline constexpr std::uint8_t kIntType = 0x28;
inline constexpr std::uint8_t kTimeType = 0x3C;
inline constexpr std::uint8_t kMenuType = 0x44;
inline constexpr std::uint8_t kIndexType = 0x50;
inline constexpr std::uint8_t kEncryptedPasswordType = 0x6C;

/// A value before it is tagged.
struct STypedBytes {
    std::uint8_t type = 0;
    Variant::Bytes bytes;
};

/// [type code][length][data]; the data has at most 255 bytes.
Variant TaggedValue(std::uint8_t type, const Variant::Bytes& data);
Variant TaggedUnsigned(std::uint32_t value, std::size_t size);
/// A little-endian number of `size` bytes.
Variant::Bytes LittleEndian(std::uint64_t value, std::size_t size);
/// The number in at most four little-endian bytes.
std::uint32_t NumberOf(const Variant::Bytes& bytes);

/// A cell's first value, tagged; empty for a cell without data whose size says otherwise.
Variant FirstValueOf(const SCell& cell);

/// The value among the members of a table that may have other members too; none when there is none.
std::optional<STypedBytes> FindValue(CTableReader& table);
/// A value that stands alone: a text, or a table that holds nothing else.
STypedBytes ReadTypedBytes(const STomlNode& node, std::string_view what);
/// A value that stands alone, in the form in which it crosses the seam. Also understands what is no value:
/// { none = true } (no data), { other = true } (a useless type), { raw = "24 01" } (any bytes).
Variant ReadValue(const STomlNode& node, std::string_view what);
/// The items of an array, each by ReadValue.
Variant::List ReadValues(CTableReader& table, std::string_view key);

/// A text as a relay holds it; throws when the relay's character set lacks a character.
Variant::Bytes RelayTextOf(const STomlNode& node, std::string_view what);

} // namespace ruvo::sim
