#include "sim/module/digest.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>

namespace ruvo::sim {

bool MakeKeyed(std::span<const unsigned char> key, std::span<const unsigned char> bytes, Digest& digest) {
    const auto keyLength = static_cast<int>(key.size());
    return HMAC(EVP_sha256(), key.data(), keyLength, bytes.data(), bytes.size(), digest.data(), nullptr) !=
           nullptr;
}

bool MakePlain(std::span<const unsigned char> bytes, Digest& digest) {
    return EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) == 1;
}

} // namespace ruvo::sim
