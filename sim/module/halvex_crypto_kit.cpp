// The stand-in for the crypto provider, for machines without one: the same entry points by number, with
// digests of its own choice. Relays that expect the provider's digest refuse this one; the simulated relays
// check with it.
#include "link/seam/crypto_provider.h"
#include "sim/module/digest.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace {

static_assert(ruvo::kDigestTextLength == 2 * ruvo::sim::kDigestSize);

/// Upper-case digits and a NUL.
void WriteHex(const ruvo::sim::Digest& digest, char* out) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    for (const unsigned char octet : digest) {
        *out++ = kDigits[octet >> 4U];
        *out++ = kDigits[octet & 0x0FU];
    }
    *out = '\0';
}

std::span<const unsigned char> TextBytes(const char* text) {
    return {reinterpret_cast<const unsigned char*>(text), std::strlen(text)};
}

} // namespace

extern "C" {

/// Keyed digest: HMAC-SHA-256 of the bytes under the key text. An empty text when the digest cannot be
/// made.
[[gnu::visibility("default")]] void Ordinal2(const unsigned char* bytes, std::uint32_t count, const char* key,
                                             char* out) {
    ruvo::sim::Digest digest{};
    *out = '\0';
    if (ruvo::sim::MakeKeyed(TextBytes(key), {bytes, count}, digest)) {
        WriteHex(digest, out);
    }
}

/// Never called; a provider without it counts as incomplete.
[[gnu::visibility("default")]] void Ordinal9() {}

/// Text digest: SHA-256 of the text without its NUL, in the same form.
[[gnu::visibility("default")]] void Ordinal13(const char* text, char* out) {
    ruvo::sim::Digest digest{};
    *out = '\0';
    if (ruvo::sim::MakePlain(TextBytes(text), digest)) {
        WriteHex(digest, out);
    }
}

} // extern "C"

static_assert(std::is_same_v<decltype(&Ordinal2), ruvo::KeyedDigestFunction>);
static_assert(std::is_same_v<decltype(&Ordinal13), ruvo::TextDigestFunction>);
