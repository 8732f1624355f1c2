#include "platform/full_path.h"

#include "platform/full_path_rules.h"
#include "platform/windows/wide_text.h"

#include <array>

namespace ruvo {

std::string FullPath(const std::string& path) {
    std::array<wchar_t, kMaxPath> full{};
    const DWORD length = GetFullPathNameW(Wide(path).c_str(), kMaxPath, full.data(), nullptr);
    // Where the text does not fit, the result is the size needed, on some systems 0.
    return length < kMaxPath ? Narrow({full.data(), length}) : std::string();
}

bool NamesDevice(const std::string& path) {
    return HasDeviceName(path);
}

std::string SystemPath(const std::string& fullPath) {
    return fullPath;
}

std::string DisplayPath(const std::string& path) {
    return path;
}

} // namespace ruvo
