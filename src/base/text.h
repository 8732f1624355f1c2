// Text helpers that know no operating system and no relay.
#pragma once

#include <string>
#include <string_view>

namespace ruvo {

/// The text with a blank in the place of every control character (below 0x20, and 0x7F).
std::string BlankControlCharacters(std::string_view text);

} // namespace ruvo
