#include "link/login/password_login.h"

#include "base/secret.h"
#include "link/seam/known_cells.h"
#include "model/values/parlane_text.h"

#include <stdexcept>

namespace ruvo {

namespace {

/// Asks the application for a password of at most `length` characters and lets `send` send it: what `send`
/// returns, or none when the application declines.
template <class Send>
std::optional<LinkStatus> AskAndSend(const CLoginAttempts& attempts, const SPasswordRequest& request,
                                     std::uint32_t length, const SLoginReport& report, Send send) {
    CSecret password(length, ' ');
    char* buffer = password.Data();
    std::uint32_t noNotify = 0;
    const GetPasswordFunction ask = LinkCallbacks().getPassword;
    if (ask == nullptr || ask(request, &buffer, length, &noNotify, report.code, report.extra) != 0 ||
        buffer == nullptr) {
        return attempts.Cancel();
    }
    const std::optional<LinkStatus> status = send(buffer);
    const PasswordAcceptedFunction accepted = LinkCallbacks().passwordAccepted;
    if (status && IsWriteGood(*status) && noNotify == 0 && accepted != nullptr) {
        accepted(request.model);
    }
    return status;
}

} // namespace

LinkStatus CPasswordLogin::EnterNonCyberSecurityPassword(const SPasswordRequest& request,
                                                         bool passwordEntered) {
    CLoginAttempts attempts(m_parts, kPlainLogin, 0);
    const auto send = [&](const char* password) {
        CParlanePassword value{std::string_view(password)};
        // The value is ours; it has no other way to be wiped.
        const CWipeAtScopeEnd wipe(const_cast<std::string&>(value.GetText()));
        const CChannel::CommandLock lock(m_parts.channel.Lock());
        return m_parts.writes.WriteCredential(lock, cells::kPassword, value,
                                              CWrites::EOperation::ChangeSetting);
    };
    return attempts.Run(passwordEntered, [&](const SLoginReport& report) {
        const std::uint32_t length = m_parts.cells.ReadPasswordLength(cells::kPassword).value_or(0);
        return AskAndSend(attempts, request, length, report, send);
    });
}

LinkStatus CPasswordLogin::EnterCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered,
                                                      std::uint8_t securityColumn) {
    CLoginAttempts attempts(m_parts, kEncipheredLogin, securityColumn);
    const auto send = [&](const char* password) -> std::optional<LinkStatus> {
        LinkStatus status = kLinkGood;
        const std::optional<std::string> key = m_parts.cells.ReadText(cells::kEncryptionKey, status);
        if (!key) { // under another key the password is wrong, and costs one of the relay's attempts
            // A status that counts as success would have the request repeated, with this entry, for ever.
            return attempts.Fail("Encryption key cannot be read",
                                 IsWriteGood(status) ? kLinkAborted : status);
        }
        try {
            const CParlaneEncryptedPassword value(password, *key);
            const CChannel::CommandLock lock(m_parts.channel.Lock());
            return m_parts.writes.WriteCredential(lock, cells::kSecurityPassword, value,
                                                  CWrites::EOperation::ChangeSetting);
        } catch (const std::invalid_argument&) { // shorter than the cipher's block
            return kLinkBadReply;
        }
    };
    return attempts.Run(passwordEntered, [&](const SLoginReport& report) -> std::optional<LinkStatus> {
        const std::optional<std::uint32_t> length =
            m_parts.cells.ReadPasswordLength(cells::kSecurityPassword);
        if (!length) {
            return attempts.Fail("Check if P32LS supports cyber-security enhancements");
        }
        return AskAndSend(attempts, request, *length, report, send);
    });
}

} // namespace ruvo
