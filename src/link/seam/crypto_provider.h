// The interface of the maker's crypto provider, a library that offers its functions by number alone. The
// client, the simulated relays and the provider's stand-in know it from here.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ruvo {

inline constexpr const char* kCryptoProviderFile = "HalvexCryptoKit.DLL";

inline constexpr unsigned kKeyedDigestOrdinal = 2;
inline constexpr unsigned kUnusedOrdinal = 9; ///< never called, but a provider without it is incomplete
inline constexpr unsigned kTextDigestOrdinal = 13;

/// Both write the digest's text and its NUL to `out`.
using KeyedDigestFunction = void (*)(const std::uint8_t* bytes, std::uint32_t count, const char* key,
                                     char* out);
using TextDigestFunction = void (*)(const char* text, char* out);

inline constexpr std::size_t kDigestTextLength = 64;
/// A digest as text and its NUL; an empty text means that there is none.
using DigestText = std::array<char, kDigestTextLength + 1>;

/// Characters of the salt that a client sends with a digest.
inline constexpr std::size_t kSaltLength = 16;

} // namespace ruvo
