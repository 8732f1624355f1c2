#include "platform/file_trust.h"

#include "platform/windows/owned_handle.h"

#include <cstdint>
#include <vector>

namespace ruvo {

namespace {

/// With any of these, one can change what a file holds, or let oneself do so.
constexpr DWORD kWriting =
    FILE_WRITE_DATA | FILE_APPEND_DATA | DELETE | WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;

/// Nothing where the system does not say.
std::vector<std::uint8_t> UserOfThisProcess() {
    HANDLE opened = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened) == FALSE) {
        return {};
    }
    const COwnedHandle token(opened);
    DWORD size = 0;
    GetTokenInformation(token.Get(), TokenUser, nullptr, 0, &size);
    std::vector<std::uint8_t> bytes(size);
    return size != 0 && GetTokenInformation(token.Get(), TokenUser, bytes.data(), size, &size) != FALSE
               ? bytes
               : std::vector<std::uint8_t>();
}

/// The system, the administrators and this user.
class CTrustedUsers {
public:
    [[nodiscard]] bool Has(PSID id) const {
        if (id == nullptr || IsValidSid(id) == FALSE) {
            return false;
        }
        const bool isThisUser =
            !m_user.empty() &&
            EqualSid(id, reinterpret_cast<const TOKEN_USER*>(m_user.data())->User.Sid) != FALSE;
        return isThisUser || IsWellKnownSid(id, WinLocalSystemSid) != FALSE ||
               IsWellKnownSid(id, WinBuiltinAdministratorsSid) != FALSE;
    }

private:
    std::vector<std::uint8_t> m_user = UserOfThisProcess();
};

/// Whether an entry of an access list lets nobody else write.
bool IsHarmless(const ACE_HEADER& entry, const CTrustedUsers& trusted) {
    switch (entry.AceType) {
    case ACCESS_DENIED_ACE_TYPE:
        return true;
    case ACCESS_ALLOWED_ACE_TYPE: {
        const auto& allowed = reinterpret_cast<const ACCESS_ALLOWED_ACE&>(entry);
        auto* const id = const_cast<DWORD*>(&allowed.SidStart);
        return (entry.AceFlags & INHERIT_ONLY_ACE) != 0 || (allowed.Mask & kWriting) == 0 || trusted.Has(id);
    }
    default: // a form that this does not know
        return false;
    }
}

bool IsTrusted(const COwnedHandle& file) {
    constexpr SECURITY_INFORMATION kBoth = OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
    DWORD size = 0;
    GetKernelObjectSecurity(file.Get(), kBoth, nullptr, 0, &size);
    std::vector<std::uint8_t> bytes(size);
    auto* const descriptor = static_cast<PSECURITY_DESCRIPTOR>(bytes.data());
    PSID owner = nullptr;
    PACL list = nullptr;
    BOOL isThere = FALSE;
    BOOL isDefault = FALSE;
    const CTrustedUsers trusted;
    if (size == 0 || GetKernelObjectSecurity(file.Get(), kBoth, descriptor, size, &size) == FALSE ||
        GetSecurityDescriptorOwner(descriptor, &owner, &isDefault) == FALSE || !trusted.Has(owner) ||
        GetSecurityDescriptorDacl(descriptor, &isThere, &list, &isDefault) == FALSE || isThere == FALSE ||
        list == nullptr) { // without a list everybody may write
        return false;
    }
    for (DWORD at = 0; at < list->AceCount; ++at) {
        void* entry = nullptr;
        if (GetAce(list, at, &entry) == FALSE ||
            !IsHarmless(*static_cast<const ACE_HEADER*>(entry), trusted)) {
            return false;
        }
    }
    return true;
}

} // namespace

// Permissions here are lists that only the system itself can judge.
std::optional<bool> IsReadableByEveryone(const std::string& /*path*/) {
    return std::nullopt;
}

ETrustedRead ReadTrustedFile(const std::string& path, std::string& bytes) {
    constexpr DWORD kLargest = DWORD{64} * 1024;
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const COwnedHandle file(CreateFileA(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
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
    if ((facts.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 || !IsTrusted(file)) {
        return ETrustedRead::Untrusted;
    }
    bytes.resize(kLargest + 1);
    DWORD size = 0;
    const bool isRead = ReadFile(file.Get(), bytes.data(), kLargest + 1, &size, nullptr) != FALSE;
    bytes.resize(isRead ? size : 0);
    return !isRead || size > kLargest ? ETrustedRead::Unreadable : ETrustedRead::Read;
}

bool IsGuarded(const std::string& /*path*/, std::uint32_t /*user*/) {
    return true;
}

} // namespace ruvo
