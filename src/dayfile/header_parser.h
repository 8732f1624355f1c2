// The header of a day file, from untrusted bytes.
#pragma once

#include "dayfile/block_parser.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace ruvo {

/// The fault of the header at the start of a file, or its size with the end byte.
struct SParsedHeader {
    std::optional<EDayFileFault> fault;
    std::size_t size = 0;
};

/// A longer header is none.
inline constexpr std::size_t kMaxHeaderSize = std::size_t{16} * 1024;

/// Parses the header at the start of the bytes, which hold the file's first kMaxHeaderSize or all of it.
[[nodiscard]] SParsedHeader ParseDayFileHeader(std::span<const std::uint8_t> bytes);

} // namespace ruvo
