#include "platform/full_path.h"

#include "base/text.h"
#include "platform/files.h"
#include "platform/full_path_rules.h"
#include "platform/posix/native_path.h"

namespace ruvo {

std::string FullPath(const std::string& path) {
    // From a drive's root on, the current folder plays no part, and the system need not be asked for it.
    const bool isFromRoot =
        path.size() > 2 && IsLetter(path[0]) && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
    std::string full = FormFullPath(path, isFromRoot ? std::string() : CurrentFolder());
    return full.size() < kMaxPath ? full : std::string();
}

std::string OwnSpelling(const std::string& path) {
    return path;
}

bool NamesDevice(const std::string& /*path*/) {
    return false;
}

std::string SystemPath(const std::string& fullPath) {
    return ToNativePath(fullPath).value_or("");
}

std::string DisplayPath(const std::string& path) {
    return ToNativePath(path).value_or(path);
}

} // namespace ruvo
