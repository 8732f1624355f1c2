// The maker's crypto provider: a library that is loaded when it is first needed and called through three
// entry points found by ordinal. Process-wide and without a lock: hashing runs on the thread of the login.
#pragma once

#include "link/seam/crypto_provider.h"

#include <cstdint>
#include <span>
#include <string>

namespace ruvo {

class CryptoLibrary {
public:
    static constexpr int kLoaded = 0;
    static constexpr int kNotLoaded = 4;

    /// Loads the provider unless that is done already: kLoaded or kNotLoaded, the cause is written to the
    /// debug output. After a failure the next call tries again.
    static int Initialize();
    /// Unloads the provider; does nothing when it is not loaded.
    static void Uninitialize();

    /// The keyed digest of the bytes under a key text. False, with an empty digest, when the provider cannot
    /// be loaded or returns none.
    [[nodiscard]] static bool MakeKeyedDigest(std::span<const std::uint8_t> bytes, const char* key,
                                              DigestText& digest);
    /// The digest of a text; fails in the same way.
    [[nodiscard]] static bool MakeTextDigest(const char* text, DigestText& digest);

private:
    struct SState;
    static SState& State();
};

/// Full path of a provider file: an absolute name is itself, any other is in the folder of the executable, or
/// in the current folder, when it can be read there and the executable is a test host.
std::string ResolveCryptoLibraryPath(const std::string& name, const std::string& executablePath,
                                     const std::string& currentFolder);

} // namespace ruvo
