// TEA, the Tiny Encryption Algorithm: 32 cycles over a block of two words with a key of four. How bytes
// become words is the caller's business.
#pragma once

#include <array>
#include <cstdint>

namespace ruvo {

struct STeaBlock {
    std::uint32_t first = 0;
    std::uint32_t second = 0;

    bool operator==(const STeaBlock&) const = default;
};

using TeaKey = std::array<std::uint32_t, 4>;

inline constexpr std::uint32_t kTeaDelta = 0x9E3779B9;
inline constexpr unsigned kTeaCycles = 32;

constexpr std::uint32_t TeaMix(std::uint32_t word, std::uint32_t sum, std::uint32_t low, std::uint32_t high) {
    return ((word << 4U) + low) ^ (word + sum) ^ ((word >> 5U) + high);
}

constexpr STeaBlock TeaEncipher(STeaBlock block, const TeaKey& key) {
    std::uint32_t sum = 0;
    for (unsigned cycle = 0; cycle < kTeaCycles; ++cycle) {
        sum += kTeaDelta;
        block.first += TeaMix(block.second, sum, key[0], key[1]);
        block.second += TeaMix(block.first, sum, key[2], key[3]);
    }
    return block;
}

constexpr STeaBlock TeaDecipher(STeaBlock block, const TeaKey& key) {
    std::uint32_t sum = kTeaDelta * kTeaCycles;
    for (unsigned cycle = 0; cycle < kTeaCycles; ++cycle) {
        block.second -= TeaMix(block.first, sum, key[2], key[3]);
        block.first -= TeaMix(block.second, sum, key[0], key[1]);
        sum -= kTeaDelta;
    }
    return block;
}

} // namespace ruvo
