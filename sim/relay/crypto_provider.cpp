#include "sim/relay/crypto_provider.h"

#include <algorithm>

namespace ruvo::sim {
namespace {

std::string ProviderIn(const std::string& folder) {
    return folder + '\\' + kCryptoProviderFile;
}

} // namespace

// The server may be registered from another folder than the program's; the program takes its own provider, so
// the second place makes both use the same where only the program has one.
std::vector<std::string> CryptoProviderFiles() {
    const std::string program = ProgramPath();
    return {ProviderIn(CodeFolder()), ProviderIn(program.substr(0, program.rfind('\\')))};
}

bool CCryptoProvider::Load() {
    if (m_keyedDigest != nullptr) {
        return true;
    }
    return std::any_of(m_files.begin(), m_files.end(), [this](const std::string& file) {
        if (m_module.Load(file)) {
            m_keyedDigest = reinterpret_cast<KeyedDigestFunction>(m_module.FindEntry(kKeyedDigestOrdinal));
        }
        return m_keyedDigest != nullptr;
    });
}

std::optional<DigestText> CCryptoProvider::KeyedDigest(std::span<const std::uint8_t> bytes,
                                                       const std::string& key) {
    if (!Load()) {
        return std::nullopt;
    }
    DigestText digest{};
    m_keyedDigest(bytes.data(), static_cast<std::uint32_t>(bytes.size()), key.c_str(), digest.data());
    const bool whole = std::find(digest.begin(), digest.end(), '\0') == digest.end() - 1;
    return whole ? std::optional(digest) : std::nullopt;
}

} // namespace ruvo::sim
