#include "platform/files.h"

#include "platform/full_path.h"
#include "platform/windows/file_failures.h"
#include "platform/windows/held_entry.h"

#include <array>

namespace ruvo {

namespace {

// The entries of a folder that a pattern names, one after the other.
class CSearch {
public:
    explicit CSearch(const std::string& pattern) : m_handle(FindFirstFileA(pattern.c_str(), &m_entry)) {}
    CSearch(const CSearch&) = delete;
    CSearch& operator=(const CSearch&) = delete;
    ~CSearch() {
        if (HasEntry()) {
            FindClose(m_handle);
        }
    }

    bool HasEntry() const { return m_handle != INVALID_HANDLE_VALUE; }
    const WIN32_FIND_DATAA& Entry() const { return m_entry; }
    bool Next() { return FindNextFileA(m_handle, &m_entry) != FALSE; }

private:
    WIN32_FIND_DATAA m_entry = {};
    HANDLE m_handle;
};

bool IsLinkEntry(const WIN32_FIND_DATAA& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsLinkTag(entry.dwReserved0);
}

bool IsFolderEntry(const WIN32_FIND_DATAA& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && !IsLinkEntry(entry);
}

bool HasWildcard(const std::string& path) {
    return path.find_first_of("*?") != std::string::npos;
}

std::string WithSeparator(const std::string& folder) {
    return folder.ends_with('\\') || folder.ends_with('/') ? folder : folder + "\\";
}

} // namespace

EPathKind GetPathKind(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return EPathKind::Missing;
    }
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? EPathKind::Folder : EPathKind::File;
}

bool IsLink(const std::string& path) {
    if (HasWildcard(path)) {
        return false;
    }
    const CSearch search(path);
    return search.HasEntry() && IsLinkEntry(search.Entry());
}

// A table of files of a fixed size is not known here.
SFreeSpace FreeSpace(const std::string& path) {
    std::string folder = FullPath(path);
    while (GetPathKind(folder) != EPathKind::Folder && folder.rfind('\\') != std::string::npos) {
        folder.erase(folder.rfind('\\'));
    }
    ULARGE_INTEGER available = {};
    ULARGE_INTEGER size = {};
    const bool isStated =
        !folder.empty() &&
        GetDiskFreeSpaceExA(WithSeparator(folder).c_str(), &available, &size, nullptr) != FALSE &&
        size.QuadPart != 0;
    return {isStated ? std::optional<std::uint64_t>(available.QuadPart) : std::nullopt, std::nullopt};
}

// The system requires a separator at the end, without which it would use the drive's current folder.
bool IsDriveRoot(const std::string& path) {
    const UINT type = path.empty() ? UINT{DRIVE_UNKNOWN} : GetDriveTypeA(WithSeparator(path).c_str());
    return type >= DRIVE_REMOVABLE && type <= DRIVE_RAMDISK;
}

// Folders and files are permissions of their own: in a drive's root most users may make the former alone.
SFileResult CanMakeEntryIn(const std::string& folder, EPathKind entry) {
    if (GetPathKind(folder) == EPathKind::File) {
        return Failed(ERROR_DIRECTORY);
    }
    const DWORD access = entry == EPathKind::Folder ? FILE_ADD_SUBDIRECTORY : FILE_ADD_FILE;
    const HANDLE opened = CreateFileA(WithSeparator(folder).c_str(), access,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (opened != INVALID_HANDLE_VALUE) {
        CloseHandle(opened);
        return {};
    }
    const DWORD code = GetLastError(); // what others share is asked of those alone who have the permission
    return code == ERROR_SHARING_VIOLATION ? SFileResult{} : Failed(code);
}

SFileResult MakeFolder(const std::string& path) {
    return Outcome(CreateDirectoryA(path.c_str(), nullptr));
}

bool RemoveEmptyFolder(const std::string& path) {
    return RemoveDirectoryA(path.c_str()) != FALSE;
}

bool RemoveFile(const std::string& path) {
    return DeleteFileA(path.c_str()) != FALSE;
}

bool RemovePlainFile(const std::string& path) {
    const CHeldEntry folder(FolderOf(path));
    return folder.IsPlain(true) && RemoveFile(path);
}

bool RenameFile(const std::string& from, const std::string& to) {
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE;
}

bool CopyToNewFile(const std::string& source, const std::string& destination) {
    return CopyFileA(source.c_str(), destination.c_str(), TRUE) != FALSE;
}

std::string MakeUniqueFile(const std::string& folder, const std::string& prefix) {
    std::array<char, kMaxPath + 1> path{};
    return GetTempFileNameA(folder.c_str(), prefix.c_str(), 0, path.data()) != 0 ? path.data()
                                                                                 : std::string();
}

bool FlushFolder(const std::string& /*folder*/) {
    return true; // the file system's own journal keeps the entries
}

bool ListFolder(const std::string& folder, std::vector<SFolderEntry>& entries) {
    entries.clear();
    if (HasWildcard(folder)) {
        return false;
    }
    CSearch search(WithSeparator(folder) + "*");
    if (!search.HasEntry()) {
        // The root of an empty drive has not even "." in it.
        return GetLastError() == ERROR_FILE_NOT_FOUND && GetPathKind(folder) == EPathKind::Folder;
    }
    do {
        const std::string name = search.Entry().cFileName;
        if (name != "." && name != "..") {
            const bool isFolder = IsFolderEntry(search.Entry());
            entries.push_back({name, isFolder, !isFolder && !IsLinkEntry(search.Entry())});
        }
    } while (search.Next());
    return GetLastError() == ERROR_NO_MORE_FILES;
}

std::string TemporaryFolder() {
    std::array<char, kMaxPath + 1> folder{};
    const DWORD length = GetTempPathA(static_cast<DWORD>(folder.size()), folder.data());
    return length < kMaxPath ? std::string(folder.data(), length) : std::string();
}

std::string CurrentFolder() {
    std::array<char, kMaxPath> folder{};
    const DWORD length = GetCurrentDirectoryA(kMaxPath, folder.data());
    return length < kMaxPath ? std::string(folder.data(), length) : std::string();
}

bool SetCurrentFolder(const std::string& folder) {
    return SetCurrentDirectoryA(folder.c_str()) != FALSE;
}

} // namespace ruvo
