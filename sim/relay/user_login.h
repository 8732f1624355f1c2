// The login of relays that know users: a name, a salt and a digest, each written to a cell of its own.
#pragma once

#include "link/seam/link_status.h"
#include "sim/file/substation.h"
#include "sim/relay/crypto_provider.h"

#include <optional>
#include <string>

namespace ruvo::sim {

/// What came of a password, and whether it opens anything when it was right.
struct SPasswordResult {
    LinkStatus status = kReplyRejected;
    bool levelTooLow = false;
};

/// Collects the three parts of a login. A name and a salt serve for one digest, and a salt for the name
/// before it, so a client that sends them out of order or not anew is refused.
class CUserLogin {
public:
    /// Borrows the model, which must outlive this.
    explicit CUserLogin(const SAccess& model);

    /// Any name is taken: a relay that reported at once which names it knows would help to guess.
    LinkStatus SetName(std::uint8_t type, const Variant::Bytes& data);
    LinkStatus SetSalt(std::uint8_t type, const Variant::Bytes& data);
    /// Good, rejected or unknown user; kReplyCommandRejected when the relay has no provider to check with.
    SPasswordResult CheckDigest(std::uint8_t type, const Variant::Bytes& data);

private:
    const SUser* FindUser() const;
    std::optional<DigestText> ExpectedDigest(const SUser& user, const std::string& salt);

    const SAccess& m_model;
    CCryptoProvider m_provider;
    std::optional<std::string> m_name;
    std::optional<std::string> m_salt;
    std::string m_lastSalt;
};

} // namespace ruvo::sim
