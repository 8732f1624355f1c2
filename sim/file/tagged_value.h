// Relay values in the form in which they cross the seam: [type code][length][data] as bytes.
#pragma once

#include "link/seam/variant.h"
#include "sim/file/substation.h"

#include <cstddef>
#include <cstdint>

namespace ruvo::sim {

/// The data has at most 255 bytes.
Variant TaggedValue(std::uint32_t type, const Variant::Bytes& data);
Variant TaggedUnsigned(std::uint32_t value, std::size_t size);
/// A menu location.
Variant TaggedMenu(CellAddress cell);

/// A little-endian number of `size` bytes.
Variant::Bytes LittleEndian(std::uint64_t value, std::size_t size);
/// The number in at most four little-endian bytes.
std::uint32_t NumberOf(const Variant::Bytes& bytes);

/// The cell of one value.
SCell MakeValueCell(std::uint32_t type, Variant::Bytes data);
/// A cell's first value, tagged; empty for a cell without data whose size says otherwise.
Variant FirstValueOf(const SCell& cell);

} // namespace ruvo::sim
