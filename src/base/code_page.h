// Texts that came from a relay are code page 1252 inside the program; here they become UTF-8, and so do those
// of the system.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ruvo {

/// Code page 1252 to UTF-8, byte for byte; the five bytes without a character become U+FFFD.
std::string Cp1252ToUtf8(std::string_view text);

/// UTF-16, little-endian, to UTF-8; half a surrogate pair, or half a character at the end, becomes U+FFFD.
std::string Utf16ToUtf8(std::string_view bytes);
/// UTF-8 to UTF-16, little-endian; a byte that is part of no character becomes U+FFFD.
std::string Utf8ToUtf16(std::string_view utf8);

/// Whether all of the text is well-formed UTF-8.
bool IsUtf8(std::string_view text);

/// A text of the system (a path, a line of a file) to UTF-8: one that is not valid UTF-8 is read as code page
/// 1252.
std::string SystemTextToUtf8(std::string_view text);

/// The control character that begins there; `size` is how many bytes it takes. False for any other one.
bool IsUtf8ControlAt(std::string_view utf8, std::size_t at, unsigned& code, std::size_t& size);

} // namespace ruvo
