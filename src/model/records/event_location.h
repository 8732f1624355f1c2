// What an event's menu location says about its record.
#pragma once

#include <cstdint>

namespace ruvo {

/// The class of a location (column x 256 + row): 0 for most, else a location that represents its group.
[[nodiscard]] std::uint16_t ClassifyEventLocation(std::uint16_t location);

/// True when a binary cell of such a record lists its named bits.
[[nodiscard]] bool ListsBits(std::uint16_t location);

/// The number of the first bit of a binary cell in a record that lists bits: registers of 32 bits follow one
/// another from row 0x30, 0x40, 0x50 or 0x60 on.
[[nodiscard]] constexpr unsigned FirstBitNumber(std::uint16_t location) {
    return 32U * (location & 0x0FU);
}

} // namespace ruvo
