#include "platform/posix/users_folders.h"

#include "platform/environment.h"

#include <array>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ruvo {

namespace {

// The home from the system's list of users, which is the same for a login, cron and a service. The
// environment's may be another user's: programs that change the user leave it as it was.
std::string HomeFolder() {
    std::array<char, 16384> buffer{};
    struct passwd entry = {};
    struct passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
        found->pw_dir != nullptr && *found->pw_dir == '/') {
        return found->pw_dir;
    }
    return EnvironmentValue("HOME").value_or("/nonexistent");
}

} // namespace

CDescriptor OpenFolder(const std::string& path) {
    return CDescriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

bool IsPrivateFolder(const CDescriptor& folder) {
    struct stat status = {};
    return folder.IsOpen() && fstat(folder.Get(), &status) == 0 && status.st_uid == geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

void MakeFolders(const std::string& path) {
    constexpr mode_t kOwnerOnly = 0700;
    for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        mkdir(path.substr(0, end).c_str(), kOwnerOnly);
    }
    mkdir(path.c_str(), kOwnerOnly);
}

std::string UsersStateFolder() {
    const auto state = EnvironmentValue("XDG_STATE_HOME");
    return (state && state->starts_with('/') ? *state : HomeFolder() + "/.local/state") + "/ruvo";
}

} // namespace ruvo
