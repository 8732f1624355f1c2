#include "platform/users.h"

#include "platform/posix/native_path.h"

#include <array>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace ruvo {

std::string UserToBecome(const std::string& folder) {
    const auto native = ToNativePath(folder);
    if (!native || geteuid() != 0) {
        return {};
    }
    std::filesystem::path place(*native);
    std::error_code ignored;
    while (!std::filesystem::is_directory(place, ignored) && place.has_relative_path()) {
        place = place.parent_path();
    }
    struct stat status = {};
    if (stat(place.c_str(), &status) != 0 || status.st_uid == 0) {
        return {};
    }
    std::array<char, 16384> buffer{};
    struct passwd entry = {};
    struct passwd* found = nullptr;
    const bool isKnown =
        getpwuid_r(status.st_uid, &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr;
    return isKnown ? found->pw_name : "#" + std::to_string(status.st_uid);
}

} // namespace ruvo
