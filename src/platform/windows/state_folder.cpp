#include "platform/state_folder.h"

#include "platform/environment.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/windows/system.h"

#include <array>

namespace ruvo {

namespace {

std::string InstalledFolder() {
    return EnvironmentValue("ProgramData").value_or("") + "\\ruvo\\state";
}

} // namespace

std::string StateFolder() {
    if (const auto named = EnvironmentValue("RUVO_STATE_DIR")) {
        return FullPath(*named);
    }
    const std::string installed = InstalledFolder();
    if (GetPathKind(installed) == EPathKind::Folder && CanMakeEntryIn(installed, EPathKind::File).Good()) {
        return installed;
    }
    const auto own = EnvironmentValue("LOCALAPPDATA");
    return own ? *own + "\\ruvo" : std::string();
}

std::vector<std::string> StateFoldersToRead() {
    std::vector<std::string> folders{StateFolder()};
    const std::string installed = InstalledFolder();
    if (!EnvironmentValue("RUVO_STATE_DIR") && folders.front() != installed &&
        GetPathKind(installed) == EPathKind::Folder) {
        folders.insert(folders.begin(), installed);
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
    const HANDLE opened = CreateFileA(folder.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        return {};
    }
    std::array<char, 1024> path{};
    const DWORD size = GetFinalPathNameByHandleA(opened, path.data(), static_cast<DWORD>(path.size()), 0);
    CloseHandle(opened);
    return size > 0 && size < path.size() ? std::string(path.data(), size) : std::string();
}

} // namespace ruvo
