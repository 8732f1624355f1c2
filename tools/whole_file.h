// Writes a file so that whoever reads it sees the old one or the new one, never half of it.
#pragma once

#include <string>
#include <string_view>

namespace ruvo {

/// Writes the text beside the path (in the system's own form) and then moves it there. What went wrong, for
/// people; empty when it is done.
[[nodiscard]] std::string ReplaceWholeFile(const std::string& path, std::string_view text);

} // namespace ruvo
