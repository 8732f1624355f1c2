#include "base/digest.h"

#include <array>
#include <cstdio>

namespace ruvo {

std::string DigestOf(std::string_view text) {
    std::uint64_t digest = kEmptyDigest;
    for (const char c : text) {
        digest = AddToDigest(digest, static_cast<std::uint8_t>(c));
    }
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llX", static_cast<unsigned long long>(digest));
    return digits.data();
}

} // namespace ruvo
