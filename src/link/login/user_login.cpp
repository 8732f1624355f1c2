#include "link/login/user_login.h"

#include "base/secret.h"
#include "base/text.h"
#include "link/login/hashed_password.h"
#include "link/seam/known_cells.h"
#include "model/values/parlane_text.h"

#include <array>
#include <cstring>
#include <new>

namespace ruvo {

namespace {

constexpr std::uint32_t kFirstEditionPasswordLength = 16; ///< the second edition's length is read

/// A text of at most `length` characters, even when its NUL is missing.
std::string BoundedText(const char* text, std::size_t length) {
    const void* end = std::memchr(text, '\0', length);
    return {text, end == nullptr ? length : static_cast<std::size_t>(static_cast<const char*>(end) - text)};
}

/// One login of a user, of either edition.
class COneUserLogin {
public:
    COneUserLogin(const SLoginParts& parts, const SLoginFlow& flow, const SPasswordRequest& request,
                  std::uint8_t column)
        : m_parts(parts), m_attempts(parts, flow, column), m_request(request), m_column(column) {}

    LinkStatus RunFirstEdition(bool passwordEntered) {
        return Guarded([&] {
            return m_attempts.Run(passwordEntered,
                                  [&](const SLoginReport& report) { return AttemptFirstEdition(report); });
        });
    }

    LinkStatus RunSecondEdition(bool passwordEntered) {
        return Guarded([&] {
            if (m_parts.cells.DetermineCSPasswordMaxLength(m_passwordLength) != kLinkGood ||
                m_parts.cells.DetermineCSUsernameMaxLength(m_userNameLength) != kLinkGood) {
                return kLinkAborted;
            }
            m_userName.assign(m_userNameLength, ' ');
            return m_attempts.Run(passwordEntered,
                                  [&](const SLoginReport& report) { return AttemptSecondEdition(report); });
        });
    }

private:
    // Both attempts begin with the users, since the relay may have changed them since the last one.

    /// What came of sending a login: the relay's answer, or what it did not take before the password.
    struct SSendResult {
        const char* fault = nullptr;
        LinkStatus status = kLinkGood;
    };

    template <class Flow>
    LinkStatus Guarded(Flow flow) {
        try {
            return flow();
        } catch (...) {
            m_attempts.Fail("Exception occured during method execution");
            return kLinkAborted;
        }
    }

    std::optional<LinkStatus> AttemptFirstEdition(const SLoginReport& report) {
        LinkStatus status = kLinkGood;
        const std::optional<std::int64_t> count = m_parts.cells.ReadNumber(cells::kUserCount, status);
        if (!HasUsers(count) || !HasNames(m_parts.cells.ReadUserNames(m_column, *count, m_names,
                                                                      CSecurityCells::ENameTrace::Silent))) {
            return std::nullopt;
        }
        CSecret password(kFirstEditionPasswordLength, ' ');
        char* buffer = password.Data();
        std::uint32_t selected = 0;
        const UsernamePasswordFunction ask = LinkCallbacks().usernamePassword;
        if (ask == nullptr ||
            ask(m_request, &buffer, kFirstEditionPasswordLength, m_names.data(), &selected, NameCount(),
                report.code, report.extra) != 0 ||
            buffer == nullptr) {
            return m_attempts.Cancel();
        }
        if (selected >= m_names.size()) { // a user that was not on offer
            return m_attempts.Fail("Error during sending username");
        }
        return Finish(Send(m_names[selected].text, buffer));
    }

    std::optional<LinkStatus> AttemptSecondEdition(const SLoginReport& report) {
        std::int64_t number = 0;
        const bool counted = m_parts.cells.ExtractCSUsernamesCount(number) == kLinkGood;
        if (!HasUsers(counted ? std::optional(number) : std::nullopt) ||
            !HasNames(m_parts.cells.ExtractCSAvailableUsernames(m_names) == kLinkGood && !m_names.empty())) {
            return std::nullopt;
        }
        // A name that was typed before stays; only an empty one is filled in.
        if (Trim(m_userName, kWhiteSpace).empty()) {
            m_userName = m_names.front().text;
        }
        m_userName.resize(m_userNameLength, ' ');
        CSecret password(m_passwordLength, ' ');
        char* buffer = password.Data();
        char* userName = m_userName.data();
        const SecondEditionLoginFunction ask = LinkCallbacks().secondEditionLogin;
        if (ask == nullptr ||
            ask(m_request, &buffer, m_passwordLength, m_names.data(), NameCount(), &userName,
                m_userNameLength, report.code, report.extra) != 0 ||
            buffer == nullptr || userName == nullptr) {
            return m_attempts.Cancel();
        }
        // The application may have put its own buffer in place of ours, so the name is copied back.
        m_userName = BoundedText(userName, m_userNameLength);
        return Finish(Send(m_userName, buffer));
    }

    bool HasUsers(const std::optional<std::int64_t>& count) {
        const bool hasUsers = count && *count >= 1;
        if (!hasUsers) {
            m_attempts.Fail(count ? "The number of users obtained from the device is equal or smaller than 0"
                                  : "Error during obtaining number of users from the device");
        }
        return hasUsers;
    }

    bool HasNames(bool read) {
        if (!read) {
            m_attempts.Fail("Error during obtaining list of users from the device");
        }
        return read;
    }

    std::uint32_t NameCount() const { return static_cast<std::uint32_t>(m_names.size()); }

    /// User name, salt and digest: one login, so no other command may come in between.
    SSendResult Send(std::string_view userName, std::string_view password) {
        const CChannel::CommandLock lock(m_parts.channel.Lock());
        const auto write = [&](CellAddress cell, const CParlaneData& value, CWrites::EOperation operation) {
            return m_parts.writes.WriteCredential(lock, cell, value, operation);
        };
        if (!IsWriteGood(write(cells::kUserName, CParlaneText(userName), CWrites::EOperation::SetValue))) {
            return {"Error during sending username"};
        }
        const CParlaneHashedPassword hashed(userName, password, kHashSalted);
        if (!hashed.HasDigest()) { // an empty one would cost the user an attempt
            return {nullptr, kLinkBadReply};
        }
        std::array<char, kSaltLength + 1> salt{};
        hashed.GetSalt(salt.data(), salt.size());
        if (!IsWriteGood(write(cells::kSalt, CParlaneText(salt.data()), CWrites::EOperation::SetValue))) {
            return {"Error during sending salt"};
        }
        return {nullptr, write(cells::kSecurityPassword, hashed, CWrites::EOperation::ChangeSetting)};
    }

    std::optional<LinkStatus> Finish(const SSendResult& sent) {
        if (sent.fault != nullptr) {
            return m_attempts.Fail(sent.fault);
        }
        const LoginAcceptedFunction accepted = LinkCallbacks().loginAccepted;
        if (IsWriteGood(sent.status) && accepted != nullptr) {
            accepted(m_request.model);
        }
        return sent.status;
    }

    SLoginParts m_parts;
    CLoginAttempts m_attempts;
    const SPasswordRequest& m_request;
    std::uint8_t m_column;
    std::vector<SUserName> m_names;
    std::uint32_t m_passwordLength = 0; // these three are the second edition's
    std::uint32_t m_userNameLength = 0;
    std::string m_userName;
};

} // namespace

LinkStatus CUserLogin::EnterCyberSecurityBrickIntegratedLoginAndPassword(const SPasswordRequest& request,
                                                                         bool passwordEntered,
                                                                         std::uint8_t securityColumn) {
    return COneUserLogin(m_parts, kUserLogin, request, securityColumn).RunFirstEdition(passwordEntered);
}

LinkStatus CUserLogin::EnterCyberSecurityBrickIntegratedLoginAndPasswordCSEd3(const SPasswordRequest& request,
                                                                              bool passwordEntered,
                                                                              std::uint8_t securityColumn) {
    return COneUserLogin(m_parts, kSecondEditionLogin, request, securityColumn)
        .RunSecondEdition(passwordEntered);
}

LinkStatus CUserLogin::ChangeHashedPasswordSettingForCSEd3(CProgressMonitor* monitor, CellAddress cell,
                                                           const std::string& username,
                                                           const std::string& password, int flag) {
    try {
        const CParlaneHashedPassword hashed = flag == 0
                                                  ? CParlaneHashedPassword(username, password, kHashKeyed)
                                                  : CParlaneHashedPassword(password, "", kHashText);
        if (!hashed.HasDigest()) {
            return kLinkBadReply;
        }
        return m_pattern.RunRequest(monitor, "ChangeHashedPasswordSettingForCSEd3", [&] {
            const CChannel::CommandLock lock(m_parts.channel.Lock());
            const LinkStatus named = m_parts.writes.WriteCredential(
                lock, cells::kUserName, CParlaneText(username), CWrites::EOperation::SetValue);
            return IsWriteGood(named) ? m_parts.writes.WriteCredential(lock, cell, hashed,
                                                                       CWrites::EOperation::ChangeSetting)
                                      : named;
        });
    } catch (const std::bad_alloc&) {
        return kLinkComFailure;
    } catch (const std::exception&) { // no random numbers for the salt
        return kLinkBadReply;
    }
}

} // namespace ruvo
