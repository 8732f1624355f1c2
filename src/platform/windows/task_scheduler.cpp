#include "platform/task_scheduler.h"

#include "platform/windows/owned_handle.h"
#include "platform/windows/system.h"

#include <sddl.h>

#include <array>

namespace ruvo {

namespace {

/// By its security identifier: names of accounts differ with the system's language.
std::string ThisAccount() {
    HANDLE opened = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened) == 0) {
        return {};
    }
    const COwnedHandle token(opened);
    alignas(TOKEN_USER) std::array<char, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> user{};
    DWORD size = 0;
    LPSTR text = nullptr;
    if (GetTokenInformation(token.Get(), TokenUser, user.data(), static_cast<DWORD>(user.size()), &size) ==
            0 ||
        ConvertSidToStringSidA(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid, &text) == 0) {
        return {};
    }
    std::string account = text;
    LocalFree(text);
    return account;
}

} // namespace

std::optional<STaskScheduler> FindTaskScheduler() {
    std::array<char, MAX_PATH> folder{};
    const UINT size = GetSystemDirectoryA(folder.data(), static_cast<UINT>(folder.size()));
    return STaskScheduler{std::string(folder.data(), size < folder.size() ? size : 0) + "\\schtasks.exe",
                          ThisAccount()};
}

} // namespace ruvo
