// The two generations of access control that know a password and no user: plain, and enciphered.
#pragma once

#include "link/login/login_attempts.h"

namespace ruvo {

/// Logs in with a password alone. The statuses are 0 or 1 when the relay accepted, else what the login ended
/// with.
class CPasswordLogin {
public:
    explicit CPasswordLogin(const SLoginParts& parts) : m_parts(parts) {}

    LinkStatus EnterNonCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered);
    LinkStatus EnterCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered,
                                          std::uint8_t securityColumn);

private:
    SLoginParts m_parts;
};

} // namespace ruvo
