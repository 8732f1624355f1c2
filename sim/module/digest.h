// The digests of the stand-in for the crypto provider; each system makes them with a library of its own.
#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace ruvo::sim {

inline constexpr std::size_t kDigestSize = 32; ///< SHA-256
using Digest = std::array<unsigned char, kDigestSize>;

/// HMAC-SHA-256 of the bytes; false when it cannot be made.
bool MakeKeyed(std::span<const unsigned char> key, std::span<const unsigned char> bytes, Digest& digest);

/// SHA-256 of the bytes; false when it cannot be made.
bool MakePlain(std::span<const unsigned char> bytes, Digest& digest);

} // namespace ruvo::sim
