// The two generations of access control that know users: a name, and a password that travels as a digest.
#pragma once

#include "link/login/login_attempts.h"

#include <string>

namespace ruvo {

/// Logs in as a user of the relay, and changes users' passwords. The statuses are 0 or 1 when the relay
/// accepted, else what the login ended with.
class CUserLogin {
public:
    CUserLogin(const SLoginParts& parts, CRequestPattern& pattern) : m_parts(parts), m_pattern(pattern) {}

    LinkStatus EnterCyberSecurityBrickIntegratedLoginAndPassword(const SPasswordRequest& request,
                                                                 bool passwordEntered,
                                                                 std::uint8_t securityColumn);
    LinkStatus EnterCyberSecurityBrickIntegratedLoginAndPasswordCSEd3(const SPasswordRequest& request,
                                                                      bool passwordEntered,
                                                                      std::uint8_t securityColumn);
    /// As `CP32Wrap` documents it.
    LinkStatus ChangeHashedPasswordSettingForCSEd3(CProgressMonitor* monitor, CellAddress cell,
                                                   const std::string& username, const std::string& password,
                                                   int flag);

private:
    SLoginParts m_parts;
    CRequestPattern& m_pattern;
};

} // namespace ruvo
