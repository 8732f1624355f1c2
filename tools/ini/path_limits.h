// Paths that no run can use, beyond what the rules of an INI file refuse.
#pragma once

#include <string>

namespace ruvo {

/// Why no run can open the path; empty when nothing in it is in the way.
[[nodiscard]] std::string WhyNoRunOpens(const std::string& path);

} // namespace ruvo
