#include "platform/posix/native_path.h"

#include "base/text.h"

#include <algorithm>

namespace ruvo {

std::optional<std::string> ToNativePath(const std::string& path) {
    std::string native = path;
    std::ranges::replace(native, '\\', '/');
    const bool hasDrive = native.size() >= 2 && native[1] == ':' && IsLetter(native[0]);
    const bool otherDrive = hasDrive && native[0] != 'C' && native[0] != 'c';
    if (native.empty() || otherDrive || native.starts_with("//") || native.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    if (hasDrive) {
        native.erase(0, 2);
    }
    return native.empty() ? "." : native;
}

std::string FromNativePath(const std::string& native) {
    std::string path = native;
    std::ranges::replace(path, '/', '\\');
    return path.starts_with('\\') ? "C:" + path : path;
}

} // namespace ruvo
