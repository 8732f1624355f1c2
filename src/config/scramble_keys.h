// The keys of the password scrambling. A scrambled password can be read back with the same keys only.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ruvo {

inline constexpr std::size_t kScrambleKeyCount = 16;
inline constexpr std::size_t kScrambleKeySize = 16;

/// 16 keys of 16 bytes, each key four little-endian words. The build chooses whose: ours or a site's own.
extern const std::array<std::uint8_t, kScrambleKeyCount * kScrambleKeySize> kScrambleKeys;

} // namespace ruvo
