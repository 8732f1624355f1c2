// The crypto provider as a test wants it: there, absent or incomplete.
#pragma once

#include "link/login/crypto_library.h"

#include <gtest/gtest.h>

#include <string>

namespace ruvo::test {

struct SModules {
    bool present = true;         ///< a load succeeds, with the built stand-in
    unsigned missingOrdinal = 0; ///< an entry point that is not found
    int loads = 0;
    int unloads = 0;
};
inline SModules g_modules;

inline std::string Keyed(const std::string& text, const std::string& key) {
    DigestText digest{};
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    EXPECT_TRUE(CryptoLibrary::MakeKeyedDigest({bytes, text.size()}, key.c_str(), digest));
    return digest.data();
}

} // namespace ruvo::test
