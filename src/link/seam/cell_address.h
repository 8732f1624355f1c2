// Cell addresses as the link's requests carry them.
#pragma once

#include <cstdint>

namespace ruvo {

/// Column in the high byte, row in the low byte.
using CellAddress = std::uint16_t;

constexpr CellAddress MakeCellAddress(std::uint8_t column, std::uint8_t row) {
    return static_cast<CellAddress>((column << 8) | row);
}
constexpr std::uint8_t ColumnOf(CellAddress cell) {
    return static_cast<std::uint8_t>(cell >> 8);
}
constexpr std::uint8_t RowOf(CellAddress cell) {
    return static_cast<std::uint8_t>(cell & 0xFF);
}

} // namespace ruvo
