// Standard error, which a scheduler keeps: the last resort for a message that has no other place. On Windows
// the program has none, and nothing is written.
#pragma once

#include <string_view>

namespace ruvo {

/// Writes one line, which gets a line end if it has none; a terminal gets "." for control characters. Never
/// fails.
void WriteStandardError(std::string_view line) noexcept;

} // namespace ruvo
