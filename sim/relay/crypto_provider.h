// The crypto provider as a relay uses it: a keyed digest out of a loadable module.
#pragma once

#include "platform/modules.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace ruvo::sim {

/// The text of a digest and its NUL.
using Digest = std::array<char, 65>;

/// Where a provider is looked for: beside the simulated server's code, then beside the running program.
std::vector<std::string> CryptoProviderFiles();

/// Loads the provider when a digest is first wanted and keeps it. Not safe for use by several threads.
class CCryptoProvider {
public:
    /// Full paths, in the order in which they are tried.
    explicit CCryptoProvider(std::vector<std::string> files) : m_files(std::move(files)) {}

    /// None when no file has a provider, or the provider makes no digest. The next call tries again.
    std::optional<Digest> KeyedDigest(std::span<const std::uint8_t> bytes, const std::string& key);

private:
    using Function = void (*)(const std::uint8_t* bytes, std::uint32_t count, const char* key, char* out);
    bool Load();

    const std::vector<std::string> m_files;
    CModule m_module;
    Function m_keyedDigest = nullptr;
};

} // namespace ruvo::sim
