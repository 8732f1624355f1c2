#include "platform/full_path.h"

#include "platform/windows/system.h"

#include <array>

namespace ruvo {

std::string FullPath(const std::string& path) {
    std::array<char, kMaxPath> full{};
    const DWORD length = GetFullPathNameA(path.c_str(), kMaxPath, full.data(), nullptr);
    // Where the text does not fit, the result is the size needed, on some systems 0.
    return length < kMaxPath ? std::string(full.data(), length) : std::string();
}

std::string SystemPath(const std::string& fullPath) {
    return fullPath;
}

std::string DisplayPath(const std::string& path) {
    return path;
}

} // namespace ruvo
