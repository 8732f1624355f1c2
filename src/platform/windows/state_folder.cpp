#include "platform/state_folder.h"

#include "platform/environment.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/windows/machine_folder.h"
#include "platform/windows/wide_text.h"

#include <array>

namespace ruvo {

namespace {

/// Made by the installer, for the system, the administrators and the account of the task. Whether this user
/// may write it does not matter: a user who may not would otherwise not find what a killed visit of the task
/// has left.
std::string InstalledFolder() {
    return MachineFolder() + "\\state";
}

std::string OwnFolder() {
    const auto own = EnvironmentValue("LOCALAPPDATA");
    return own ? *own + "\\ruvo" : std::string();
}

} // namespace

std::string StateFolder() {
    if (const auto named = EnvironmentValue("RUVO_STATE_DIR")) {
        return FullPath(*named);
    }
    const std::string installed = InstalledFolder();
    return GetPathKind(installed) == EPathKind::Folder ? installed : OwnFolder();
}

std::vector<std::string> StateFoldersToRead() {
    std::vector<std::string> folders{StateFolder()};
    const std::string own = OwnFolder(); // from before the installation
    if (!EnvironmentValue("RUVO_STATE_DIR") && folders.front() != own &&
        GetPathKind(own) == EPathKind::Folder) {
        folders.push_back(own);
    }
    return folders;
}

// What a new folder allows to whom comes from the one above it.
bool MakePrivateFolder(const std::string& folder) {
    for (std::size_t end = folder.find('\\', 3); end != std::string::npos; end = folder.find('\\', end + 1)) {
        static_cast<void>(MakeFolder(folder.substr(0, end))); // what comes of it is seen below
    }
    static_cast<void>(MakeFolder(folder));
    return GetPathKind(folder) == EPathKind::Folder;
}

std::string ResolvedFolder(const std::string& folder) {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE opened = CreateFileW(Wide(folder).c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        return {};
    }
    std::array<wchar_t, 1024> path{};
    const DWORD size = GetFinalPathNameByHandleW(opened, path.data(), static_cast<DWORD>(path.size()), 0);
    CloseHandle(opened);
    return size > 0 && size < path.size() ? Narrow({path.data(), size}) : std::string();
}

} // namespace ruvo
