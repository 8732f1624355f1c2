// The crypto provider as a relay uses it: a keyed digest out of a loadable module.
#pragma once

#include "link/seam/crypto_provider.h"
#include "platform/modules.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace ruvo::sim {

/// Where a provider is looked for: beside the simulated server's code, then beside the running program.
std::vector<std::string> CryptoProviderFiles();

/// Loads the provider when a digest is first wanted and keeps it. Not safe for use by several threads.
class CCryptoProvider {
public:
    /// Full paths, in the order in which they are tried.
    explicit CCryptoProvider(std::vector<std::string> files) : m_files(std::move(files)) {}

    /// None when no file has a provider, or the provider makes no digest. The next call tries again.
    std::optional<DigestText> KeyedDigest(std::span<const std::uint8_t> bytes, const std::string& key);

private:
    bool Load();

    const std::vector<std::string> m_files;
    CModule m_module;
    KeyedDigestFunction m_keyedDigest = nullptr;
};

} // namespace ruvo::sim
