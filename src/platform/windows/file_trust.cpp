#include "platform/file_trust.h"

#include "platform/files.h"
#include "platform/state_folder.h"
#include "platform/windows/access_list.h"
#include "platform/windows/owned_handle.h"
#include "platform/windows/wide_text.h"

namespace ruvo {

namespace {

constexpr DWORD kWrite = FILE_WRITE_DATA | FILE_APPEND_DATA | DELETE | GENERIC_WRITE;

/// Others may make files in a folder, but neither move it nor take something out of it.
bool IsGuardedPath(const std::string& path) {
    bool isGuarded = !LetsOthers(path, kWrite);
    for (std::size_t end = path.rfind('\\'); isGuarded && end != std::string::npos && end >= 2;
         end = path.rfind('\\', end - 1)) {
        const bool isRoot = end == 2 && path[1] == ':';
        const bool isShare = path.starts_with("\\\\") && path.find('\\', 2) == end; // \\server has no list
        if (!isShare) {
            isGuarded = !LetsOthers(path.substr(0, isRoot ? end + 1 : end), FILE_DELETE_CHILD | DELETE);
        }
    }
    return isGuarded;
}

} // namespace

const char* HowToRestrict() {
    return "\"icacls FILE /inheritance:r /grant:r %USERNAME%:F *S-1-5-32-544:F *S-1-5-18:F\" restricts it to you, the "
           "administrators and the system";
}

const char* TrustedUsers() {
    return "administrators and the user of the visit";
}

// Folders above it do not matter: by default the system lets everybody pass through them.
std::optional<bool> IsReadableByEveryone(const std::string& path) {
    return GetPathKind(path) == EPathKind::File
               ? std::optional(LetsEveryUser(path, FILE_READ_DATA | GENERIC_READ))
               : std::nullopt;
}

ETrustedRead ReadTrustedFile(const std::string& path, std::string& bytes) {
    constexpr DWORD kLargest = DWORD{64} * 1024;
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const COwnedHandle file(CreateFileW(Wide(path).c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!file.IsOpen()) {
        const DWORD code = GetLastError();
        return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND ? ETrustedRead::Missing
                                                                            : ETrustedRead::Unreadable;
    }
    BY_HANDLE_FILE_INFORMATION facts = {};
    if (GetFileType(file.Get()) != FILE_TYPE_DISK ||
        GetFileInformationByHandle(file.Get(), &facts) == FALSE) {
        return ETrustedRead::Unreadable;
    }
    if ((facts.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 || LetsOthers(file.Get(), kWrite)) {
        return ETrustedRead::Untrusted;
    }
    bytes.resize(kLargest + 1);
    DWORD size = 0;
    const bool isRead = ReadFile(file.Get(), bytes.data(), kLargest + 1, &size, nullptr) != FALSE;
    bytes.resize(isRead ? size : 0);
    return !isRead || size > kLargest ? ETrustedRead::Unreadable : ETrustedRead::Read;
}

bool IsGuarded(const std::string& path, std::uint32_t /*user*/) {
    if (GetPathKind(path) == EPathKind::Missing || !IsGuardedPath(path)) {
        return false;
    }
    constexpr std::string_view kLongForm = "\\\\?\\";
    const std::string resolved = ResolvedFolder(path);
    return resolved.size() <= kLongForm.size() || IsGuardedPath(resolved.substr(kLongForm.size()));
}

} // namespace ruvo
