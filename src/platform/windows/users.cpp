#include "platform/users.h"

namespace ruvo {

// An administrator's files stay within the reach of those who may write their folder: what a new file allows
// to whom comes from there.
bool IsRoot() {
    return false;
}

std::optional<SUser> FindUser(const std::string& /*name*/) {
    return std::nullopt;
}

SUser CurrentUser() {
    return {};
}

std::optional<SUser> OwnerOf(const std::string& /*folder*/) {
    return std::nullopt;
}

std::string ContinueAs(const SUser& /*user*/, const std::vector<std::string>& /*arguments*/) {
    return "this system starts no program as another user";
}

} // namespace ruvo
