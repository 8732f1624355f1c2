#include "platform/files.h"

#include "base/text.h"
#include "platform/full_path.h"
#include "platform/windows/file_failures.h"
#include "platform/windows/file_handle.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace ruvo {

namespace {

SFileResult Outcome(BOOL good) {
    return good != FALSE ? SFileResult{} : Failed(GetLastError());
}

DWORD Disposition(SOpenMode mode) {
    if (mode.exclusive) {
        return CREATE_NEW;
    }
    if (mode.create) {
        return mode.truncate ? CREATE_ALWAYS : OPEN_ALWAYS;
    }
    return mode.truncate ? TRUNCATE_EXISTING : OPEN_EXISTING;
}

// One call of the system moves 32 bits' worth at most.
DWORD CallSize(std::size_t size) {
    return static_cast<DWORD>(std::min<std::size_t>(size, std::numeric_limits<DWORD>::max()));
}

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

// Other reparse points (files in the cloud, compacted files) are what they look like.
bool IsLinkTag(DWORD tag) {
    return tag == IO_REPARSE_TAG_SYMLINK || tag == IO_REPARSE_TAG_MOUNT_POINT;
}

bool IsLinkEntry(const WIN32_FIND_DATAA& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && IsLinkTag(entry.dwReserved0);
}

bool IsFolderEntry(const WIN32_FIND_DATAA& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && !IsLinkEntry(entry);
}

// The entry that a path names: a link itself, not its target. While it is held, no process can rename or
// delete it, and so put something else in its place.
class CHeldEntry {
public:
    explicit CHeldEntry(const std::string& path)
        : m_handle(CreateFileA(path.c_str(), FILE_READ_DATA | FILE_READ_ATTRIBUTES, // a folder's names: alike
                               FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                               FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr)),
          m_code(m_handle == INVALID_HANDLE_VALUE ? GetLastError() : DWORD{ERROR_SUCCESS}) {
        if (m_code == ERROR_SUCCESS && GetFileInformationByHandle(m_handle, &m_entry) == FALSE) {
            m_code = GetLastError();
        }
    }
    CHeldEntry(const CHeldEntry&) = delete;
    CHeldEntry& operator=(const CHeldEntry&) = delete;
    ~CHeldEntry() {
        if (m_handle != INVALID_HANDLE_VALUE) {
            CloseHandle(m_handle);
        }
    }

    DWORD Code() const { return m_code; }
    bool IsPlain(bool folder) const {
        const bool isFolder = (m_entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        return m_code == ERROR_SUCCESS && isFolder == folder && GetFileType(m_handle) == FILE_TYPE_DISK &&
               !IsLink();
    }

private:
    bool IsLink() const {
        FILE_ATTRIBUTE_TAG_INFO tag = {};
        return (m_entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
               (GetFileInformationByHandleEx(m_handle, FileAttributeTagInfo, &tag, sizeof tag) == FALSE ||
                IsLinkTag(tag.ReparseTag));
    }

    HANDLE m_handle;
    DWORD m_code;
    BY_HANDLE_FILE_INFORMATION m_entry = {};
};

bool HasWildcard(const std::string& path) {
    return path.find_first_of("*?") != std::string::npos;
}

// Shared, so that others can look at the log and the day files during a run, as on other systems.
HANDLE OpenAny(const std::string& path, SOpenMode mode, DWORD disposition, DWORD flags) {
    const DWORD access = (mode.read ? GENERIC_READ : 0) | (mode.write ? GENERIC_WRITE : 0) |
                         (mode.exclusive ? DELETE : 0); // for RemoveIfEmpty
    const DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | (mode.removable ? FILE_SHARE_DELETE : 0);
    return CreateFileA(path.c_str(), access, sharing, nullptr, disposition, FILE_ATTRIBUTE_NORMAL | flags,
                       nullptr);
}

// Without a separator at the end, which would follow a link; that of a drive's root belongs to it.
std::string FolderOf(const std::string& path) {
    const std::size_t end = path.find_last_of("\\/");
    return end == std::string::npos ? "." : path.substr(0, end == 2 && path[1] == ':' ? 3 : end);
}

// A file that is there is held while it is opened, so that what is opened is what was looked at; one that is
// missing is made where nothing is, not even a link that leads nowhere.
SFileResult OpenPlain(const std::string& path, SOpenMode mode, HANDLE& opened) {
    const CHeldEntry folder(FolderOf(path));
    if (folder.Code() == ERROR_FILE_NOT_FOUND) {
        return {EFileFailure::BadPath, ERROR_FILE_NOT_FOUND};
    }
    if (!folder.IsPlain(true)) {
        return folder.Code() == ERROR_SUCCESS ? SFileResult{EFileFailure::NotPlain, ERROR_CANT_ACCESS_FILE}
                                              : Failed(folder.Code());
    }
    const CHeldEntry file(path);
    if (file.Code() == ERROR_FILE_NOT_FOUND && mode.create) {
        opened = OpenAny(path, mode, CREATE_NEW, FILE_FLAG_OPEN_REPARSE_POINT);
    } else if (file.IsPlain(false)) {
        opened = OpenAny(path, mode, mode.truncate ? TRUNCATE_EXISTING : OPEN_EXISTING, 0);
    } else {
        return file.Code() == ERROR_SUCCESS ? SFileResult{EFileFailure::NotPlain, ERROR_CANT_ACCESS_FILE}
                                            : Failed(file.Code());
    }
    return Outcome(opened != INVALID_HANDLE_VALUE);
}

std::string WithSeparator(const std::string& folder) {
    return folder.ends_with('\\') || folder.ends_with('/') ? folder : folder + "\\";
}

} // namespace

std::string SystemErrorText(long systemCode) {
    constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    std::array<char, 1024> buffer{};
    const DWORD length = FormatMessageA(kFlags, nullptr, static_cast<DWORD>(systemCode), 0, buffer.data(),
                                        static_cast<DWORD>(buffer.size()), nullptr);
    const std::string_view text = TrimEnd({buffer.data(), length}, "\r\n ");
    return text.empty() ? "System error " + std::to_string(systemCode) : std::string(text);
}

CFile::CFile() : m_handle(std::make_unique<SHandle>()) {}

CFile::~CFile() {
    static_cast<void>(Close());
}

SFileResult CFile::Open(const std::string& path, SOpenMode mode) {
    static_cast<void>(Close());
    HANDLE opened = INVALID_HANDLE_VALUE;
    const SFileResult result =
        mode.plain ? OpenPlain(path, mode, opened)
                   : Outcome((opened = OpenAny(path, mode, Disposition(mode), 0)) != INVALID_HANDLE_VALUE);
    if (!result.Good()) {
        return result;
    }
    m_handle->file = opened;
    // Only a file on a disk will do: a pipe or a device has no end, no length and no position.
    if (GetFileType(opened) != FILE_TYPE_DISK) {
        static_cast<void>(Close());
        return {EFileFailure::Other, ERROR_BAD_DEV_TYPE};
    }
    return {};
}

bool CFile::IsOpen() const {
    return m_handle->file != nullptr;
}

SFileResult CFile::GetLength(std::uint64_t& length) {
    LARGE_INTEGER size = {};
    const BOOL good = GetFileSizeEx(m_handle->file, &size);
    length = good != FALSE ? static_cast<std::uint64_t>(size.QuadPart) : 0;
    return Outcome(good);
}

SFileResult CFile::Seek(std::int64_t offset, ESeekOrigin origin, std::uint64_t& position) {
    constexpr std::array<DWORD, 3> kOrigins{FILE_BEGIN, FILE_CURRENT, FILE_END};
    LARGE_INTEGER distance = {};
    LARGE_INTEGER reached = {};
    distance.QuadPart = offset;
    const BOOL good =
        SetFilePointerEx(m_handle->file, distance, &reached, kOrigins[static_cast<std::size_t>(origin)]);
    position = good != FALSE ? static_cast<std::uint64_t>(reached.QuadPart) : 0;
    return Outcome(good);
}

SFileResult CFile::Read(std::span<std::uint8_t> buffer, std::size_t& count) {
    DWORD got = 0;
    const BOOL good = ReadFile(m_handle->file, buffer.data(), CallSize(buffer.size()), &got, nullptr);
    count = good != FALSE ? got : 0;
    return Outcome(good);
}

SFileResult CFile::Write(std::span<const std::uint8_t> bytes, std::size_t& count) {
    count = 0;
    if (!IsOpen()) {
        return Failed(ERROR_INVALID_HANDLE);
    }
    while (count < bytes.size()) {
        const auto rest = bytes.subspan(count);
        DWORD put = 0;
        const BOOL good = WriteFile(m_handle->file, rest.data(), CallSize(rest.size()), &put, nullptr);
        count += put; // a disk that fills up takes a part
        if (good == FALSE || put == 0) {
            return Failed(good == FALSE ? GetLastError() : DWORD{ERROR_WRITE_FAULT});
        }
    }
    return {};
}

// The position stays, which SetEndOfFile would need to have moved first.
SFileResult CFile::SetLength(std::uint64_t length) {
    FILE_END_OF_FILE_INFO end = {};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(length);
    return Outcome(SetFileInformationByHandle(m_handle->file, FileEndOfFileInfo, &end, sizeof end));
}

SFileResult CFile::FlushToDisk() {
    const BOOL flushed = FlushFileBuffers(m_handle->file);
    const DWORD code = flushed != FALSE ? DWORD{ERROR_SUCCESS} : GetLastError();
    const bool unknownHere = code == ERROR_INVALID_FUNCTION || code == ERROR_NOT_SUPPORTED;
    return code == ERROR_SUCCESS || unknownHere ? SFileResult{} : Failed(code);
}

SFileResult CFile::Close() {
    const HANDLE file = std::exchange(m_handle->file, nullptr);
    return file == nullptr ? Failed(ERROR_INVALID_HANDLE) : Outcome(CloseHandle(file));
}

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

void FlushFolder(const std::string& /*folder*/) {} // the file system's own journal keeps the entries

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
