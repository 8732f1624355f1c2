// Standard error, which a scheduler keeps: the last resort for a message that has no other place. On Windows
// it goes to a program that has started this one, or a file, never to a console.
#pragma once

#include <string_view>

namespace ruvo {

/// Writes one line, which gets a line end if it has none; a terminal gets "." for control characters. Never
/// fails.
void WriteStandardError(std::string_view line) noexcept;

} // namespace ruvo
