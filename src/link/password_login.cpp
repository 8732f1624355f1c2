// The two generations that know a password and no user: plain, and enciphered.
#include "link/login.h"

#include "platform/secret.h"
#include "protocol/parlane_text.h"

#include <stdexcept>

namespace ruvo {

namespace {

/// Asks the application for a password of at most `length` characters and lets `send` send it: the relay's
/// answer, or none when the application gives none.
template <class Send>
std::optional<LinkStatus> AttemptWithPassword(GetPasswordFunction getPassword,
                                              PasswordAcceptedFunction accepted,
                                              const SPasswordRequest& request, std::uint32_t length,
                                              const SLoginReport& report, Send send) {
    CSecret password(length, ' ');
    char* buffer = password.Data();
    std::uint32_t noNotify = 0;
    if (getPassword == nullptr ||
        getPassword(request, &buffer, length, &noNotify, report.code, report.extra) != 0 ||
        buffer == nullptr) {
        return std::nullopt;
    }
    const LinkStatus status = send(buffer);
    if (IsWriteGood(status) && noNotify == 0 && accepted != nullptr) {
        accepted(request.model);
    }
    return status;
}

} // namespace

LinkStatus CP32Wrap::EnterNonCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered) {
    CLogin login(*this, kPlainLogin, 0);
    const auto send = [&](const char* password) {
        CParlanePassword value{std::string_view(password)};
        // The value is ours; it has no other way to be wiped.
        const CWipeAtScopeEnd wipe(const_cast<std::string&>(value.GetText()));
        const CommandLock lock(m_commandLock);
        return WriteCredential(lock, cells::kPassword, value, EWriteSlot::ChangeSetting);
    };
    return login.Run(passwordEntered, [&](const SLoginReport& report) -> std::optional<LinkStatus> {
        const std::uint32_t length = ReadPasswordLength(cells::kPassword).value_or(0);
        const auto status = AttemptWithPassword(Callbacks().getPassword, Callbacks().passwordAccepted,
                                                request, length, report, send);
        return status ? status : login.Cancel();
    });
}

LinkStatus CP32Wrap::EnterCyberSecurityPassword(const SPasswordRequest& request, bool passwordEntered,
                                                std::uint8_t securityColumn) {
    CLogin login(*this, kEncipheredLogin, securityColumn);
    const auto send = [&](const char* password) {
        const std::string key = ReadText(cells::kEncryptionKey).value_or("");
        try {
            const CParlaneEncryptedPassword value(password, key);
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
        const auto status = AttemptWithPassword(Callbacks().getPassword, Callbacks().passwordAccepted,
                                                request, *length, report, send);
        return status ? status : login.Cancel();
    });
}

} // namespace ruvo
