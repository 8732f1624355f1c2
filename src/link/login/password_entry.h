// Entering a password on the caller's behalf: what is common to all generations of access control.
#pragma once

#include "link/channel/password_check.h"
#include "link/login/password_login.h"
#include "link/login/user_login.h"

#include <functional>
#include <memory>

namespace ruvo {

/// The password check of the requests, and the entry that it leads to. A request that an entry makes itself
/// and that is answered with a password status ends with that status; only an application's callback can
/// enter a password inside an entry.
class CPasswordEntry final : public IPasswordCheck {
public:
    /// The parts and logins are borrowed.
    CPasswordEntry(const SLoginParts& parts, CPasswordLogin& passwordLogin, CUserLogin& userLogin)
        : m_parts(parts), m_passwordLogin(passwordLogin), m_userLogin(userLogin) {}

    void ProcessPasswordRequest(CProgressMonitor* monitor, LinkStatus& status, bool& passwordEntered,
                                bool& repeat, const std::string& message, CellAddress cell) override;
    /// As `CP32Wrap` documents it.
    LinkStatus EnterPassword(CProgressMonitor* monitor, bool passwordEntered);
    /// One login that was chosen already, as an entry that leaves the guard cell alone.
    LinkStatus RunLogin(const std::function<LinkStatus()>& login);

private:
    LinkStatus EnterPasswordByGeneration(bool passwordEntered);
    SPasswordRequest BuildPasswordRequest(std::uint8_t securityColumn, std::uint32_t& version);
    std::unique_ptr<CParlaneData> ReadPasswordGuard();
    void ClearPasswordGuard(std::unique_ptr<CParlaneData>& saved);
    void RestorePasswordGuard(const CParlaneData* saved) noexcept;

    SLoginParts m_parts;
    CPasswordLogin& m_passwordLogin;
    CUserLogin& m_userLogin;
};

} // namespace ruvo
