// Texts that came from a relay are code page 1252 inside the program; here they become UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace ruvo {

/// Code page 1252 to UTF-8, byte for byte; the five bytes without a character become U+FFFD.
std::string Cp1252ToUtf8(std::string_view text);

/// UTF-16, little-endian, to UTF-8; half a surrogate pair, or half a character at the end, becomes U+FFFD.
std::string Utf16ToUtf8(std::string_view bytes);

} // namespace ruvo
