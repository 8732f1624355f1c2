#include "platform/file_trust.h"

namespace ruvo {

// Permissions here are lists that only the system itself can judge.
std::optional<bool> IsReadableByEveryone(const std::string& /*path*/) {
    return std::nullopt;
}

ETrustedRead ReadTrustedFile(const std::string& /*path*/, std::string& /*bytes*/) {
    return ETrustedRead::Unsupported;
}

bool IsGuarded(const std::string& /*path*/, std::uint32_t /*user*/) {
    return true;
}

} // namespace ruvo
