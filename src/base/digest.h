// FNV-1a of 64 bits: distinguishes names and byte sequences that nobody forges.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ruvo {

/// The digest of nothing.
inline constexpr std::uint64_t kEmptyDigest = 0xCBF29CE484222325;

constexpr std::uint64_t AddToDigest(std::uint64_t digest, std::uint8_t byte) {
    return (digest ^ byte) * 0x100000001B3;
}

/// Of a text, as 16 hexadecimal digits.
[[nodiscard]] std::string DigestOf(std::string_view text);

} // namespace ruvo
