#include "platform/code_page.h"

#include <algorithm>

namespace ruvo {

std::string NativeRelayText(std::string_view cp1252) {
    std::string text(cp1252);
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
    std::ranges::replace_if(text, isControl, ' ');
    return Cp1252ToUtf8(text);
}

} // namespace ruvo
