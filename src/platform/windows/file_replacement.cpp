#include "platform/file_replacement.h"

#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/windows/access_list.h"
#include "platform/windows/owned_handle.h"
#include "platform/windows/wide_text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <sddl.h>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace ruvo {

namespace {

constexpr std::string_view kDevicePrefix = R"(\\?\)";
constexpr std::string_view kDeviceServerPrefix = R"(\\?\UNC\)";

SAccessResult Failed(EAccessFailure failure) {
    return {failure, static_cast<long>(GetLastError())};
}

// The form of a path that the rest of the program takes.
std::string WithoutDevicePrefix(std::string_view path) {
    if (path.starts_with(kDeviceServerPrefix)) {
        return R"(\\)" + std::string(path.substr(kDeviceServerPrefix.size()));
    }
    return std::string(path.substr(path.starts_with(kDevicePrefix) ? kDevicePrefix.size() : 0));
}

std::string ResolvedPath(HANDLE file) {
    std::array<wchar_t, 1024> path{};
    const DWORD length = GetFinalPathNameByHandleW(file, path.data(), static_cast<DWORD>(path.size()),
                                                   FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
    return length < path.size() ? WithoutDevicePrefix(Narrow({path.data(), length})) : std::string();
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Whether the path leads to that open file.
bool IsSameFile(const std::string& path, const COwnedHandle& file) {
    const COwnedHandle named(CreateFileW(Wide(path).c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    BY_HANDLE_FILE_INFORMATION one = {};
    BY_HANDLE_FILE_INFORMATION other = {};
    return named.IsOpen() && GetFileInformationByHandle(named.Get(), &one) != FALSE &&
           GetFileInformationByHandle(file.Get(), &other) != FALSE &&
           one.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
           one.nFileIndexHigh == other.nFileIndexHigh && one.nFileIndexLow == other.nFileIndexLow;
}

std::string FolderOf(const std::string& path) {
    return path.substr(0, path.find_last_of("\\/") + 1);
}

std::string NameOf(const std::string& path) {
    return path.substr(path.find_last_of("\\/") + 1);
}

void RemoveLeftovers(const std::string& oldPath) {
    std::vector<SFolderEntry> entries;
    if (!ListFolder(FolderOf(oldPath), entries)) {
        return;
    }
    for (const SFolderEntry& entry : entries) {
        if (!entry.isFolder && file_replacement::IsTemporaryName(entry.name, NameOf(oldPath))) {
            RemoveFile(FolderOf(oldPath) + entry.name);
        }
    }
}

// With the access rights that changing its permissions takes and, where the system permits, its owner.
COwnedHandle MakeFile(const std::string& path, SECURITY_ATTRIBUTES* security) {
    constexpr DWORD kAccess = GENERIC_WRITE | READ_CONTROL | WRITE_DAC;
    const auto make = [&](DWORD access) {
        return CreateFileW(Wide(path).c_str(), access, FILE_SHARE_READ, security, CREATE_NEW,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    };
    COwnedHandle made(make(kAccess | WRITE_OWNER));
    if (!made.IsOpen() && GetLastError() == ERROR_ACCESS_DENIED) {
        made = COwnedHandle(make(kAccess));
    }
    return made;
}

COwnedHandle OpenExisting(const std::string& path, DWORD access) {
    return COwnedHandle(CreateFileW(Wide(path).c_str(), access, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool IsThereAlready(DWORD code) {
    return code == ERROR_FILE_EXISTS || code == ERROR_ALREADY_EXISTS;
}

// The access list is always kept. Keeping the owner takes a privilege that few users have; without it the new
// file belongs to the user who writes it.
bool CopyOwnerAndPermissions(const COwnedHandle& from, const COwnedHandle& to) {
    constexpr SECURITY_INFORMATION kList = DACL_SECURITY_INFORMATION;
    constexpr SECURITY_INFORMATION kBoth = kList | OWNER_SECURITY_INFORMATION;
    DWORD size = 0;
    GetKernelObjectSecurity(from.Get(), kBoth, nullptr, 0, &size);
    std::vector<char> bytes(size);
    auto* const descriptor = static_cast<PSECURITY_DESCRIPTOR>(bytes.data());
    return size != 0 && GetKernelObjectSecurity(from.Get(), kBoth, descriptor, size, &size) != FALSE &&
           (SetKernelObjectSecurity(to.Get(), kBoth, descriptor) != FALSE ||
            SetKernelObjectSecurity(to.Get(), kList, descriptor) != FALSE);
}

} // namespace

SAccessResult ResolveOutputPath(const std::string& systemPath, std::string& resolved) {
    resolved = systemPath; // few users have the privilege to create links
    return {};
}

namespace file_replacement {

struct COldFile::SHandle {
    COwnedHandle file;
    COwnedHandle lock; // a file beside it; the system deletes it on close, even when the process is killed
    std::string path;
    bool isStream = false;
};

COldFile::COldFile() : m_handle(std::make_unique<SHandle>()) {}
COldFile::~COldFile() = default;

SAccessResult COldFile::Open(const std::string& path, EFileKind kind) {
    const bool isOutput = kind == EFileKind::Output;
    m_path = path;
    m_kind = kind;
    m_handle->isStream = false;
    m_handle->file = OpenExisting(path, GENERIC_READ | GENERIC_WRITE);
    if (!m_handle->file.IsOpen() && isOutput && GetLastError() == ERROR_FILE_NOT_FOUND) {
        m_handle->path = FullPath(path);
        return m_handle->path.empty() ? Failed(EAccessFailure::NotFound) : SAccessResult{};
    }
    const COwnedHandle& file = m_handle->file;
    if (!file.IsOpen()) {
        const bool isDenied = GetLastError() == ERROR_ACCESS_DENIED;
        return isDenied && isOutput
                   ? OpenStream()
                   : Failed(isDenied ? EAccessFailure::NotWritable : EAccessFailure::NotFound);
    }
    BY_HANDLE_FILE_INFORMATION facts = {};
    if (GetFileType(file.Get()) != FILE_TYPE_DISK ||
        GetFileInformationByHandle(file.Get(), &facts) == FALSE) {
        return isOutput ? OpenStream() : SAccessResult{EAccessFailure::NotFound, 0};
    }
    if (facts.nNumberOfLinks > 1 && !isOutput) {
        return {EAccessFailure::HardLinked, 0};
    }
    m_handle->path = ResolvedPath(file.Get());
    return m_handle->path.empty() ? Failed(EAccessFailure::NotFound) : SAccessResult{};
}

// A pipe may be one that only takes bytes.
SAccessResult COldFile::OpenStream() {
    m_handle->file = COwnedHandle(); // a pipe may have one end only
    m_handle->file = OpenExisting(m_path, GENERIC_WRITE);
    m_handle->isStream = m_handle->file.IsOpen() && GetFileType(m_handle->file.Get()) != FILE_TYPE_DISK;
    return m_handle->isStream ? SAccessResult{} : Failed(EAccessFailure::NotWritable);
}

bool COldFile::Exists() const {
    return m_handle->file.IsOpen();
}

bool COldFile::IsStream() const {
    return m_handle->isStream;
}

// A lock file that one process at a time can open. Locking the old file itself would not do: it is closed
// before it is replaced.
SAccessResult COldFile::Lock() {
    if (IsStream()) {
        return {};
    }
    constexpr int kTries = 100;
    constexpr std::chrono::milliseconds kPause(20);
    const std::string lock = FolderOf(m_handle->path) + "." + NameOf(m_handle->path) + ".lock";
    DWORD code = ERROR_SUCCESS;
    for (int tries = 0; tries < kTries && !m_handle->lock.IsOpen(); ++tries) {
        m_handle->lock =
            COwnedHandle(CreateFileW(Wide(lock).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                     FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
        code = m_handle->lock.IsOpen() ? ERROR_SUCCESS : GetLastError();
        // While a file is being deleted, the system answers "access denied".
        if (code != ERROR_SHARING_VIOLATION && code != ERROR_ACCESS_DENIED) {
            break;
        }
        std::this_thread::sleep_for(kPause);
    }
    if (code != ERROR_SUCCESS) {
        return code == ERROR_SHARING_VIOLATION
                   ? SAccessResult{EAccessFailure::InUse, 0}
                   : SAccessResult{EAccessFailure::NotCreated, static_cast<long>(code)};
    }
    RemoveLeftovers(m_handle->path);
    return Exists() && IsSameFile(m_handle->path, m_handle->file) ? SAccessResult{} : Open(m_path, m_kind);
}

bool COldFile::Contains(std::string_view bytes) {
    std::array<char, 16384> block{};
    LARGE_INTEGER start = {};
    if (SetFilePointerEx(m_handle->file.Get(), start, nullptr, FILE_BEGIN) == FALSE) {
        return false;
    }
    for (;;) {
        DWORD count = 0;
        const bool isRead = ReadFile(m_handle->file.Get(), block.data(), static_cast<DWORD>(block.size()),
                                     &count, nullptr) != FALSE;
        if (!isRead || count == 0) {
            return isRead && bytes.empty() && IsSameFile(m_handle->path, m_handle->file);
        }
        if (!bytes.starts_with(std::string_view(block.data(), count))) {
            return false;
        }
        bytes.remove_prefix(count);
    }
}

struct CNewFile::SHandle {
    COwnedHandle file;
    bool removeOnClose = false;

    /// Null for the permissions of its folder.
    SAccessResult Make(const std::string& path, SECURITY_ATTRIBUTES* security) {
        file = MakeFile(path, security);
        removeOnClose = file.IsOpen();
        return removeOnClose ? SAccessResult{}
                             : Failed(IsThereAlready(GetLastError()) ? EAccessFailure::Exists
                                                                     : EAccessFailure::NotCreated);
    }
};

CNewFile::CNewFile() : m_handle(std::make_unique<SHandle>()) {}

CNewFile::~CNewFile() {
    m_handle->file = COwnedHandle();
    if (m_handle->removeOnClose) {
        RemoveFile(m_path);
    }
}

// The list comes with the file, so that nobody can open it before. A file system without such lists ignores
// it.
SAccessResult CNewFile::Create(const std::string& path, std::string_view /*readers*/) {
    SECURITY_ATTRIBUTES security = {sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
    if (ConvertStringSecurityDescriptorToSecurityDescriptorA(PrivateDescriptorText().c_str(), SDDL_REVISION_1,
                                                             &security.lpSecurityDescriptor,
                                                             nullptr) == FALSE) {
        return Failed(EAccessFailure::NotCreated);
    }
    m_path = path;
    const SAccessResult result = m_handle->Make(path, &security);
    LocalFree(security.lpSecurityDescriptor);
    return result;
}

SAccessResult CNewFile::CreateBeside(COldFile& old) {
    constexpr int kTries = 100;
    if (old.IsStream()) {
        m_handle->file = std::move(old.Handle().file);
        return {};
    }
    const std::string& oldPath = old.Handle().path;
    SAccessResult result{EAccessFailure::Exists, 0};
    for (int tries = 0; tries < kTries && result.failure == EAccessFailure::Exists; ++tries) {
        m_path = FolderOf(oldPath) + TemporaryName(NameOf(oldPath));
        result = m_handle->Make(m_path, nullptr);
    }
    if (!result.Good()) {
        return {EAccessFailure::NotCreated, result.systemCode};
    }
    return !old.Exists() || CopyOwnerAndPermissions(old.Handle().file, m_handle->file)
               ? SAccessResult{}
               : Failed(EAccessFailure::PermissionsNotKept);
}

SAccessResult CNewFile::Write(std::string_view bytes) {
    constexpr std::size_t kLargestPiece = std::size_t{1} << 20U;
    while (!bytes.empty()) {
        DWORD count = 0;
        const auto size = static_cast<DWORD>(std::min(bytes.size(), kLargestPiece));
        if (WriteFile(m_handle->file.Get(), bytes.data(), size, &count, nullptr) == FALSE || count == 0) {
            return Failed(EAccessFailure::NotWritten);
        }
        bytes.remove_prefix(count);
    }
    return {};
}

// Closed at the end: a caller that checks the new file opens it without sharing for writing.
SAccessResult CNewFile::Flush() {
    const bool isStream = !m_handle->removeOnClose; // which cannot be flushed
    if (!isStream && FlushFileBuffers(m_handle->file.Get()) == FALSE) {
        return Failed(EAccessFailure::NotWritten);
    }
    m_handle->file = COwnedHandle();
    return {};
}

SAccessResult CNewFile::Replace(COldFile& old) {
    constexpr DWORD kFlags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    old.Handle().file = COwnedHandle(); // the system does not replace an open file
    if (MoveFileExW(Wide(m_path).c_str(), Wide(old.Handle().path).c_str(), kFlags) == FALSE) {
        return Failed(EAccessFailure::NotReplaced);
    }
    Keep();
    return {};
}

void CNewFile::Keep() {
    m_handle->file = COwnedHandle();
    m_handle->removeOnClose = false;
}

} // namespace file_replacement

} // namespace ruvo
