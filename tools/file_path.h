// Paths as the standard library takes them.
#pragma once

#include <filesystem>
#include <string>

namespace ruvo {

/// From UTF-8. (Its own conversion from plain text takes another encoding on Windows; the one back returns
/// UTF-8.)
inline std::filesystem::path FilePath(const std::string& utf8) {
    return std::u8string(utf8.begin(), utf8.end());
}

} // namespace ruvo
