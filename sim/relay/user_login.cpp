#include "sim/relay/user_login.h"

#include "link/seam/crypto_provider.h"
#include "link/seam/known_cells.h"
#include "model/values/character_set.h"
#include "model/values/type_codes.h"
#include "sim/file/relay_text.h"

#include <algorithm>
#include <utility>

namespace ruvo::sim {
namespace {

constexpr unsigned kSecondEdition = 3;

std::vector<std::string> ProviderFiles(const SAccess& model) {
    return model.providerFiles.empty() ? CryptoProviderFiles() : model.providerFiles;
}

std::span<const std::uint8_t> BytesOf(const char* text, std::size_t count) {
    return {reinterpret_cast<const std::uint8_t*>(text), count};
}

} // namespace

CUserLogin::CUserLogin(const SAccess& model) : m_model(model), m_provider(ProviderFiles(model)) {}

LinkStatus CUserLogin::SetName(std::uint8_t type, const Variant::Bytes& data) {
    m_salt.reset();
    m_name.reset();
    if (type != kTypeText || data.size() > kUserNameLength) {
        return kReplyRejected;
    }
    m_name = WithoutTrailingBlanks(DecodeDeviceBytes(data));
    return kLinkGood;
}

LinkStatus CUserLogin::SetSalt(std::uint8_t type, const Variant::Bytes& data) {
    m_salt.reset();
    std::string salt = DecodeDeviceBytes(data);
    if (type != kTypeText || salt.size() != kSaltLength || (m_model.freshSalt && salt == m_lastSalt)) {
        return kReplyRejected;
    }
    m_lastSalt = salt;
    m_salt = std::move(salt);
    return kLinkGood;
}

const SUser* CUserLogin::FindUser() const {
    const auto found = std::find_if(m_model.users.begin(), m_model.users.end(),
                                    [this](const SUser& user) { return user.name == m_name; });
    return found == m_model.users.end() ? nullptr : &*found;
}

// The salt keys the first digest together with its NUL.
std::optional<DigestText> CUserLogin::ExpectedDigest(const SUser& user, const std::string& salt) {
    const std::string& password = *user.password;
    const auto unsalted = m_provider.KeyedDigest(BytesOf(password.data(), password.size()), user.name);
    return unsalted ? m_provider.KeyedDigest(BytesOf(unsalted->data(), unsalted->size()), salt)
                    : std::nullopt;
}

SPasswordResult CUserLogin::CheckDigest(std::uint8_t type, const Variant::Bytes& data) {
    const SUser* user = FindUser();
    const bool named = std::exchange(m_name, std::nullopt).has_value();
    const std::optional<std::string> salt = std::exchange(m_salt, std::nullopt);
    if (!named || !salt || type != kTypePassword || data.size() != kDigestTextLength) {
        return {kReplyRejected};
    }
    if (user == nullptr) {
        return {m_model.generation >= kSecondEdition ? kReplyUnknownUser : kReplyRejected};
    }
    if (!user->password) {
        return {kReplyRejected};
    }
    const std::optional<DigestText> expected = ExpectedDigest(*user, *salt);
    if (!expected) {
        return {kReplyCommandRejected};
    }
    const bool right = std::equal(data.begin(), data.end(), expected->begin());
    return {right ? kLinkGood : kReplyRejected, user->levelTooLow};
}

} // namespace ruvo::sim
