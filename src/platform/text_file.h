// Whole text files, for callers that parse the text themselves: INI text with its line numbers, substation
// files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ruvo {

/// A text file of more bytes than this counts as unreadable: it is no configuration, and taking it apart
/// would exhaust the memory of a small machine.
inline constexpr std::size_t kLargestTextFile = std::size_t{4} * 1024 * 1024;

/// All text of a file, in UTF-8 when a byte-order mark says that it is UTF-16 (little-endian); false when it
/// cannot be read or is no regular file.
bool ReadTextFile(const std::string& path, std::string& text);

/// The bytes of such a file as they are.
bool ReadTextFileBytes(const std::string& path, std::string& bytes);
/// The text that such bytes encode.
std::string TextOfFileBytes(std::string_view bytes);
/// The byte-order mark of UTF-16 (little-endian).
inline constexpr std::string_view kUtf16Mark = "\xFF\xFE";

} // namespace ruvo
