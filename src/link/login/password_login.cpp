// The two generations that know a password and no user: plain, and enciphered.
#include "link/login/login.h"

#include "base/secret.h"
#include "model/values/parlane_text.h"

#include <stdexcept>

namespace ruvo {

template <class Send>
std::optional<LinkStatus> CP32Wrap::CLogin::Attempt(const SPasswordRequest& request, std::uint32_t length,
                                                    const SLoginReport& report, Send send) const {
    CSecret password(length, ' ');
    char* buffer = password.Data();
    std::uint32_t noNotify = 0;
    const GetPasswordFunction ask = Callbacks().getPassword;
    if (ask == nullptr || ask(request, &buffer, length, &noNotify, report.code, report.extra) != 0 ||
        buffer == nullptr) {
        return Cancel();
    }
    const std::optional<LinkStatus> status = send(buffer);
    const PasswordAcceptedFunction accepted = Callbacks().passwordAccepted;
    if (status && IsWriteGood(*status) && noNotify == 0 && accepted != nullptr) {
        accepted(request.model);
    }
    return status;
}

LinkStatus CP32Wrap::EnterNonCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered) {
    CLogin login(*this, kPlainLogin, 0);
    const auto send = [&](const char* password) {
        CParlanePassword value{std::string_view(password)};
        // The value is ours; it has no other way to be wiped.
        const CWipeAtScopeEnd wipe(const_cast<std::string&>(value.GetText()));
        const CommandLock lock(m_commandLock);
        return WriteCredential(lock, cells::kPassword, value, EWriteSlot::ChangeSetting);
    };
    return login.Run(passwordEntered, [&](const SLoginReport& report) {
        const std::uint32_t length = ReadPasswordLength(cells::kPassword).value_or(0);
        return login.Attempt(request, length, report, send);
    });
}

LinkStatus CP32Wrap::EnterCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered,
                                                std::uint8_t securityColumn) {
    CLogin login(*this, kEncipheredLogin, securityColumn);
    const auto send = [&](const char* password) -> std::optional<LinkStatus> {
        LinkStatus status = kLinkGood;
        const std::optional<std::string> key = ReadText(cells::kEncryptionKey, status);
        if (!key) { // under another key the password is wrong, and costs one of the relay's attempts
            // A status that counts as success would have the request repeated, with this entry, for ever.
            return login.Fail("Encryption key cannot be read", IsWriteGood(status) ? kLinkAborted : status);
        }
        try {
            const CParlaneEncryptedPassword value(password, *key);
            const CommandLock lock(m_commandLock);
            return WriteCredential(lock, cells::kSecurityPassword, value, EWriteSlot::ChangeSetting);
        } catch (const std::invalid_argument&) { // shorter than the cipher's block
            return kLinkBadReply;
        }
    };
    return login.Run(passwordEntered, [&](const SLoginReport& report) -> std::optional<LinkStatus> {
        const std::optional<std::uint32_t> length = ReadPasswordLength(cells::kSecurityPassword);
        if (!length) {
            return login.Fail("Check if P32LS supports cyber-security enhancements");
        }
        return login.Attempt(request, *length, report, send);
    });
}

} // namespace ruvo
