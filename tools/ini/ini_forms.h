// What entries of an INI file look like when nothing is wrong with them.
#pragma once

#include <string_view>

namespace ruvo {

/// What scrambling can have written. Unscrambling takes more than that.
[[nodiscard]] bool CanBeScrambled(std::string_view text);

} // namespace ruvo
