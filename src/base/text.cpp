#include "base/text.h"

#include <algorithm>

namespace ruvo {

std::string BlankControlCharacters(std::string_view text) {
    std::string cleaned(text);
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
    std::ranges::replace_if(cleaned, isControl, ' ');
    return cleaned;
}

} // namespace ruvo
