// Relay values as a substation file writes them: { uint = 5, size = 2 }, "a text", { type = 0x24, bytes =
// "05" }.
#pragma once

#include "link/seam/variant.h"
#include "sim/file/table_reader.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ruvo::sim {

/// A value before it is tagged.
struct STypedBytes {
    std::uint8_t type = 0;
    Variant::Bytes bytes;
};

/// The value among the members of a table that may have other members too; none when there is none.
std::optional<STypedBytes> FindValue(CTableReader& table);
/// A single value: a text, or a table that holds nothing else.
STypedBytes ReadTypedBytes(const STomlNode& node, std::string_view what);
/// A single value, in the form in which it crosses the seam. Also understands what is no value:
/// { none = true } (no data), { other = true } (a useless type), { raw = "24 01" } (any bytes).
Variant ReadValue(const STomlNode& node, std::string_view what);
/// The items of an array, each by ReadValue.
Variant::List ReadValues(CTableReader& table, std::string_view key);

/// A text as a relay holds it; throws when the relay's character set lacks a character.
Variant::Bytes ReadRelayText(const STomlNode& node, std::string_view what);
/// A password's characters as a login sends them (code page 1252); throws when one has none.
std::string ReadPasswordText(const STomlNode& node);

} // namespace ruvo::sim
