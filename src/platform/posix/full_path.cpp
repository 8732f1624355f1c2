#include "platform/full_path.h"

#include "platform/files.h"
#include "platform/full_path_rules.h"
#include "platform/posix/native_path.h"

namespace ruvo {

std::string FullPath(const std::string& path) {
    std::string full = FormFullPath(path, CurrentFolder());
    return full.size() < kMaxPath ? full : std::string();
}

std::string SystemPath(const std::string& fullPath) {
    return ToNativePath(fullPath).value_or("");
}

std::string DisplayPath(const std::string& path) {
    return ToNativePath(path).value_or(path);
}

} // namespace ruvo
