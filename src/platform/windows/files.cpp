#include "platform/files.h"

#include "platform/full_path.h"
#include "platform/windows/file_failures.h"
#include "platform/windows/held_entry.h"
#include "platform/windows/wide_text.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

// The entries of a folder that a pattern names, one after the other.
class CSearch {
public:
    explicit CSearch(const std::string& pattern)
        : m_handle(FindFirstFileW(Wide(pattern).c_str(), &m_entry)) {}
    CSearch(const CSearch&) = delete;
    CSearch& operator=(const CSearch&) = delete;
    ~CSearch() {
        if (HasEntry()) {
            FindClose(m_handle);
        }
    }

    bool HasEntry() const { return m_handle != INVALID_HANDLE_VALUE; }
    const WIN32_FIND_DATAW& Entry() const { return m_entry; }
    bool Next() { return FindNextFileW(m_handle, &m_entry) != FALSE; }

private:
    WIN32_FIND_DATAW m_entry = {};
    HANDLE m_handle;
};

std::wstring InCapitals(std::wstring text) {
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

/// Both in capitals. After a mismatch the last * takes one character more.
bool Matches(std::wstring_view name, std::wstring_view pattern) {
    std::size_t at = 0;
    std::size_t star = std::wstring_view::npos;
    std::size_t taken = 0; // of the name, up to the end of what that * takes
    for (std::size_t i = 0; i < name.size();) {
        if (at < pattern.size() && pattern[at] == L'*') {
            star = at++;
            taken = i;
        } else if (at < pattern.size() && (pattern[at] == L'?' || pattern[at] == name[i])) {
            ++at;
            ++i;
        } else if (star != std::wstring_view::npos) {
            at = star + 1;
            i = ++taken;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', at) == std::wstring_view::npos;
}

bool IsLinkEntry(const WIN32_FIND_DATAW& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsLinkTag(entry.dwReserved0);
}

bool IsFolderEntry(const WIN32_FIND_DATAW& entry) {
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
    const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return EPathKind::Missing;
    }
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? EPathKind::Folder : EPathKind::File;
}

bool IsAbsent(const std::string& path) {
    if (GetFileAttributesW(Wide(path).c_str()) != INVALID_FILE_ATTRIBUTES) {
        return false;
    }
    const DWORD code = GetLastError();
    return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND;
}

bool IsMarkedReadOnly(const std::string& path) {
    const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
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
        GetDiskFreeSpaceExW(Wide(WithSeparator(folder)).c_str(), &available, &size, nullptr) != FALSE &&
        size.QuadPart != 0;
    return {isStated ? std::optional<std::uint64_t>(available.QuadPart) : std::nullopt, std::nullopt};
}

// The system requires a separator at the end, without which it would use the drive's current folder.
bool IsDriveRoot(const std::string& path) {
    const UINT type = path.empty() ? UINT{DRIVE_UNKNOWN} : GetDriveTypeW(Wide(WithSeparator(path)).c_str());
    return type >= DRIVE_REMOVABLE && type <= DRIVE_RAMDISK;
}

// Folders and files are permissions of their own: in a drive's root most users may make the former alone.
SFileResult CanMakeEntryIn(const std::string& folder, EPathKind entry) {
    if (GetPathKind(folder) == EPathKind::File) {
        return Failed(ERROR_DIRECTORY);
    }
    const DWORD access = entry == EPathKind::Folder ? FILE_ADD_SUBDIRECTORY : FILE_ADD_FILE;
    const HANDLE opened = CreateFileW(Wide(WithSeparator(folder)).c_str(), access,
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
    return Outcome(CreateDirectoryW(Wide(path).c_str(), nullptr));
}

bool RemoveEmptyFolder(const std::string& path) {
    return RemoveDirectoryW(Wide(path).c_str()) != FALSE;
}

bool RemoveFile(const std::string& path) {
    return DeleteFileW(Wide(path).c_str()) != FALSE;
}

bool RemovePlainFile(const std::string& path) {
    const CHeldEntry folder(FolderOf(path));
    return folder.IsPlain(true) && RemoveFile(path);
}

bool RenameFile(const std::string& from, const std::string& to) {
    return MoveFileExW(Wide(from).c_str(), Wide(to).c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE;
}

bool CopyToNewFile(const std::string& source, const std::string& destination) {
    return CopyFileW(Wide(source).c_str(), Wide(destination).c_str(), TRUE) != FALSE;
}

std::string MakeUniqueFile(const std::string& folder, const std::string& prefix) {
    std::array<wchar_t, kMaxPath + 1> path{};
    return GetTempFileNameW(Wide(folder).c_str(), Wide(prefix).c_str(), 0, path.data()) != 0
               ? Narrow(path.data())
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
        const std::string name = Narrow(search.Entry().cFileName);
        if (name != "." && name != "..") {
            const bool isFolder = IsFolderEntry(search.Entry());
            entries.push_back({name, isFolder, !isFolder && !IsLinkEntry(search.Entry())});
        }
    } while (search.Next());
    return GetLastError() == ERROR_NO_MORE_FILES;
}

// (The system's own search also looks at short names, by which *.evt matches a file .evtx.)
std::vector<std::string> FilesOfPattern(const std::string& typed) {
    const std::size_t folder = typed.find_last_of("/\\:") + 1; // none: 0
    std::wstring pattern = InCapitals(Wide(typed.substr(folder)));
    pattern = pattern == L"*.*" ? L"*" : pattern; // on this system also names without a dot
    std::vector<std::string> files;
    std::vector<SFolderEntry> entries;
    const std::string place = folder == 0 ? "." : typed.substr(0, folder) + ".";
    if (pattern.find_first_of(L"*?") != std::wstring::npos && ListFolder(place, entries)) {
        for (const SFolderEntry& entry : entries) {
            if (Matches(InCapitals(Wide(entry.name)), pattern)) {
                files.push_back(typed.substr(0, folder) + entry.name);
            }
        }
    }
    std::ranges::sort(files);
    return files.empty() ? std::vector{typed} : files;
}

std::string TemporaryFolder() {
    std::array<wchar_t, kMaxPath + 1> folder{};
    const DWORD length = GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    return length < kMaxPath ? Narrow({folder.data(), length}) : std::string();
}

std::string CurrentFolder() {
    std::array<wchar_t, kMaxPath> folder{};
    const DWORD length = GetCurrentDirectoryW(kMaxPath, folder.data());
    return length < kMaxPath ? Narrow({folder.data(), length}) : std::string();
}

bool SetCurrentFolder(const std::string& folder) {
    return SetCurrentDirectoryW(Wide(folder).c_str()) != FALSE;
}

} // namespace ruvo
