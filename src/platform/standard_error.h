// The last place for what must not be lost in silence: standard error, which a scheduler keeps. Windows,
// where the program has none, gets nothing.
#pragma once

#include <string_view>

namespace ruvo {

/// Writes one line, which gets a line end if it has none; a terminal gets "." for control characters. Never
/// fails.
void WriteStandardError(std::string_view line) noexcept;

} // namespace ruvo
