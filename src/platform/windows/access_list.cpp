#include "platform/windows/access_list.h"

#include "platform/windows/owned_handle.h"
#include "platform/windows/wide_text.h"

#include <aclapi.h>
#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <sddl.h>
#include <string_view>
#include <vector>

namespace ruvo {

namespace {

struct SFreeLocal {
    void operator()(void* memory) const { LocalFree(memory); }
};

std::string TextOf(PSID sid) {
    char* text = nullptr;
    if (ConvertSidToStringSidA(sid, &text) == FALSE) {
        return {};
    }
    const std::unique_ptr<char, SFreeLocal> owned(text);
    return text;
}

bool IsEveryUser(std::string_view sid) {
    constexpr std::array<std::string_view, 6> kEveryUser{
        "S-1-1-0",      // everyone
        "S-1-5-11",     // who has logged on
        "S-1-5-4",      // who has logged on at the machine
        "S-1-5-2",      // who comes over the network
        "S-1-5-32-545", // users
        "S-1-5-32-546", // guests
    };
    return std::ranges::find(kEveryUser, sid) != kEveryUser.end();
}

bool IsTrusted(std::string_view sid, std::string_view user) {
    constexpr std::array<std::string_view, 4> kTrusted{
        "S-1-5-18",                                                       // the system
        "S-1-5-32-544",                                                   // administrators
        "S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464", // the system's installer
        "S-1-3-4", // the owner, who is looked at as such
    };
    constexpr std::string_view kOfDomain = "S-1-5-21-";
    const bool isDomainAdministrators = sid.starts_with(kOfDomain) && sid.ends_with("-512");
    return std::ranges::find(kTrusted, sid) != kTrusted.end() || isDomainAdministrators || sid == user;
}

/// Owner and list of a file or folder.
class CAccess {
public:
    explicit CAccess(const std::string& path) {
        std::wstring name = Wide(path);
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        m_isKnown = GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, kAsked, &m_owner, nullptr, &m_list,
                                          nullptr, &descriptor) == ERROR_SUCCESS;
        m_descriptor.reset(descriptor);
    }

    explicit CAccess(HANDLE file) {
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        m_isKnown = GetSecurityInfo(file, SE_FILE_OBJECT, kAsked, &m_owner, nullptr, &m_list, nullptr,
                                    &descriptor) == ERROR_SUCCESS;
        m_descriptor.reset(descriptor);
    }

    bool IsKnown() const { return m_isKnown; }
    std::string Owner() const { return m_owner != nullptr ? TextOf(m_owner) : std::string(); }

    /// Whether somebody of that kind may do one of these. What another entry denies is not taken off.
    bool Lets(DWORD rights, const std::function<bool(std::string_view sid)>& who) const {
        if (m_list == nullptr) {
            return true;
        }
        for (DWORD index = 0; index < m_list->AceCount; ++index) {
            void* entry = nullptr;
            if (GetAce(m_list, index, &entry) == FALSE) {
                return true;
            }
            const auto& head = *static_cast<const ACE_HEADER*>(entry);
            if (head.AceType == ACCESS_DENIED_ACE_TYPE || (head.AceFlags & INHERIT_ONLY_ACE) != 0) {
                continue;
            }
            if (head.AceType != ACCESS_ALLOWED_ACE_TYPE) { // a form that this does not know
                return true;
            }
            auto& allowed = *static_cast<ACCESS_ALLOWED_ACE*>(entry);
            if ((allowed.Mask & (rights | GENERIC_ALL)) != 0 && who(TextOf(&allowed.SidStart))) {
                return true;
            }
        }
        return false;
    }

private:
    static constexpr SECURITY_INFORMATION kAsked = OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

    bool m_isKnown = false;
    PSID m_owner = nullptr; // both within the descriptor
    PACL m_list = nullptr;
    std::unique_ptr<void, SFreeLocal> m_descriptor;
};

bool LetsOthers(const CAccess& access, DWORD rights) {
    const std::string user = UserIdentifier();
    return !access.IsKnown() || !IsTrusted(access.Owner(), user) ||
           access.Lets(rights | WRITE_DAC | WRITE_OWNER,
                       [&user](std::string_view sid) { return !IsTrusted(sid, user); });
}

} // namespace

std::string UserIdentifier() {
    HANDLE opened = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened) == FALSE) {
        return {};
    }
    const COwnedHandle token(opened);
    alignas(TOKEN_USER) std::array<char, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> bytes{};
    DWORD size = 0;
    const bool isKnown = GetTokenInformation(token.Get(), TokenUser, bytes.data(),
                                             static_cast<DWORD>(bytes.size()), &size) != FALSE;
    return isKnown ? TextOf(reinterpret_cast<const TOKEN_USER*>(bytes.data())->User.Sid) : std::string();
}

bool LetsEveryUser(const std::string& path, DWORD rights) {
    const CAccess access(path);
    return access.IsKnown() && access.Lets(rights, IsEveryUser);
}

bool LetsOthers(const std::string& path, DWORD rights) {
    return LetsOthers(CAccess(path), rights);
}

bool LetsOthers(HANDLE file, DWORD rights) {
    return LetsOthers(CAccess(file), rights);
}

std::string PrivateDescriptorText() {
    const std::string user = UserIdentifier();
    return user.empty() ? user : "O:" + user + "D:P(A;;FA;;;" + user + ")(A;;FA;;;BA)(A;;FA;;;SY)";
}

} // namespace ruvo
