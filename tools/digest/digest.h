// Makes digests of sites.
#pragma once

#include "tools/digest/digest_output.h"

#include <cstdint>
#include <string>

namespace ruvo {

/// The digest of one run alone, as the programs that run after a visit get it. INI path in full.
[[nodiscard]] SDigest DigestOfVisit(const std::string& fullIniPath, std::uint64_t number, SConsole& console);

} // namespace ruvo
