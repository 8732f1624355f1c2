#include "platform/state_folder.h"

#include "platform/environment.h"
#include "platform/full_path.h"
#include "platform/posix/native_path.h"
#include "platform/posix/users_folders.h"

#include <climits>
#include <cstdlib>
#include <memory>
#include <unistd.h>

namespace ruvo {

namespace {

constexpr const char* kPackageFolder =
    "/var/lib/ruvo-state"; // made by the package, for the user of the services

} // namespace

std::string StateFolder() {
    if (const auto named = EnvironmentValue("RUVO_STATE_DIR")) {
        return FullPath(*named);
    }
    return FromNativePath(IsPrivateFolder(OpenFolder(kPackageFolder)) ? kPackageFolder : UsersStateFolder());
}

std::vector<std::string> StateFoldersToRead() {
    std::vector<std::string> folders{StateFolder()};
    if (!EnvironmentValue("RUVO_STATE_DIR") && access(kPackageFolder, F_OK) == 0 &&
        folders.front() != FromNativePath(kPackageFolder)) {
        folders.insert(folders.begin(), FromNativePath(kPackageFolder));
    }
    return folders;
}

bool MakePrivateFolder(const std::string& folder) {
    const auto native = ToNativePath(folder);
    if (!native) {
        return false;
    }
    MakeFolders(*native); // what comes of it is seen below
    return IsPrivateFolder(OpenFolder(*native));
}

std::string ResolvedFolder(const std::string& folder) {
    const auto native = ToNativePath(folder);
    const std::unique_ptr<char, decltype(&std::free)> resolved(
        native ? realpath(native->c_str(), nullptr) : nullptr, &std::free);
    return resolved ? FromNativePath(resolved.get()) : std::string();
}

} // namespace ruvo
