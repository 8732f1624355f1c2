#include "platform/file_access.h"

#include "platform/windows/system.h"

#include <array>
#include <string_view>
#include <vector>

namespace ruvo {

namespace {

constexpr std::string_view kDevicePrefix = R"(\\?\)";
constexpr std::string_view kDeviceServerPrefix = R"(\\?\UNC\)";

SAccessResult Failed(EAccessFailure failure) {
    return {failure, static_cast<long>(GetLastError())};
}

// An open file.
class CHandle {
public:
    explicit CHandle(HANDLE handle) : m_handle(handle) {}
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;
    ~CHandle() {
        if (IsOpen()) {
            CloseHandle(m_handle);
        }
    }

    bool IsOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle;
};

// The form of a path that the rest of the program takes.
std::string WithoutDevicePrefix(std::string_view path) {
    if (path.starts_with(kDeviceServerPrefix)) {
        return R"(\\)" + std::string(path.substr(kDeviceServerPrefix.size()));
    }
    return std::string(path.substr(path.starts_with(kDevicePrefix) ? kDevicePrefix.size() : 0));
}

std::string PathBehindLinks(HANDLE file) {
    std::array<char, 1024> path{};
    const DWORD length = GetFinalPathNameByHandleA(file, path.data(), static_cast<DWORD>(path.size()),
                                                   FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
    return length < path.size() ? WithoutDevicePrefix({path.data(), length}) : std::string();
}

} // namespace

// Permissions here are lists that only the system itself can judge.
std::optional<bool> IsReadableByEveryone(const std::string& /*path*/) {
    return std::nullopt;
}

namespace file_access {

SAccessResult FindExchangeable(const std::string& path, std::string& found) {
    constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const CHandle file(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, kShare, nullptr, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.IsOpen()) {
        const bool isDenied = GetLastError() == ERROR_ACCESS_DENIED;
        return Failed(isDenied ? EAccessFailure::NotWritable : EAccessFailure::NotFound);
    }
    BY_HANDLE_FILE_INFORMATION facts = {};
    if (GetFileType(file.Get()) != FILE_TYPE_DISK ||
        GetFileInformationByHandle(file.Get(), &facts) == FALSE) {
        return {EAccessFailure::NotFound, 0};
    }
    if (facts.nNumberOfLinks > 1) {
        return {EAccessFailure::OtherNames, 0};
    }
    found = PathBehindLinks(file.Get());
    return found.empty() ? Failed(EAccessFailure::NotFound) : SAccessResult{};
}

SAccessResult MakeNew(const std::string& path, std::string_view /*readers*/) {
    const CHandle made(
        CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (made.IsOpen()) {
        return {};
    }
    const bool exists = GetLastError() == ERROR_FILE_EXISTS || GetLastError() == ERROR_ALREADY_EXISTS;
    return Failed(exists ? EAccessFailure::Exists : EAccessFailure::NotMade);
}

// The list of who may do what is kept. The owner is kept where the system lets the user give a file away,
// which takes a privilege that hardly anyone has; whoever may write the file owns the new one otherwise.
SAccessResult MakeAlike(const std::string& pattern, const std::string& path) {
    constexpr SECURITY_INFORMATION kList = DACL_SECURITY_INFORMATION;
    DWORD size = 0;
    GetFileSecurityA(pattern.c_str(), kList | OWNER_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<char> bytes(size);
    auto* const descriptor = static_cast<PSECURITY_DESCRIPTOR>(bytes.data());
    if (size == 0 || GetFileSecurityA(pattern.c_str(), kList | OWNER_SECURITY_INFORMATION, descriptor, size,
                                      &size) == FALSE) {
        return Failed(EAccessFailure::NotLikeOld);
    }
    if (SetFileSecurityA(path.c_str(), kList | OWNER_SECURITY_INFORMATION, descriptor) != FALSE ||
        SetFileSecurityA(path.c_str(), kList, descriptor) != FALSE) {
        return {};
    }
    return Failed(EAccessFailure::NotLikeOld);
}

SAccessResult MoveOver(const std::string& newPath, const std::string& path) {
    constexpr DWORD kFlags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    return MoveFileExA(newPath.c_str(), path.c_str(), kFlags) != FALSE ? SAccessResult{}
                                                                       : Failed(EAccessFailure::NotExchanged);
}

} // namespace file_access

} // namespace ruvo
