// A digest as text, as a mail's HTML part and as JSON. All are UTF-8.
#pragma once

#include "tools/digest/digest_lines.h"

#include <string>

namespace ruvo {

/// Trips and faults are left out, then further lines, until it has at most so many lines; what is left out is
/// counted. 0 for no limit.
[[nodiscard]] std::string DigestAsText(const SDigest& digest, std::size_t mostLines);
/// One document with inline styles, without a script or anything from elsewhere.
[[nodiscard]] std::string DigestAsHtml(const SDigest& digest, std::size_t mostLines);
/// One object with everything.
[[nodiscard]] std::string DigestAsJson(const SDigest& digest);

} // namespace ruvo
