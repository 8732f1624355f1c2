// The password value of the user-name generations: never the password, only a digest of it.
#pragma once

#include "base/secret.h"
#include "link/login/crypto_library.h"
#include "model/values/parlane_data.h"

#include <array>
#include <string>
#include <string_view>

namespace ruvo {

/// How a hashed password is made of its two texts.
enum EHashMode : int {
    kHashSalted = 0, ///< digest of (digest of the second under the first, with its NUL) under the salt
    kHashKeyed = 1,  ///< digest of the second text under the first; any mode that is not named here, too
    kHashText = 2,   ///< digest of the first text alone
};

/// A digest and the salt that it may have been made with; never changes after its construction.
class CParlaneHashedPassword final : public CParlaneData {
public:
    /// Trailing white space of both texts does not count. Needs the crypto provider: without it the digest
    /// stays empty. Throws std::exception when the system has no random numbers.
    CParlaneHashedPassword(std::string_view first, std::string_view second, int mode);
    CParlaneHashedPassword(const CParlaneHashedPassword&) = default;
    CParlaneHashedPassword& operator=(const CParlaneHashedPassword&) = default;
    /// Wipes the digest: an unsalted one is as good as the password.
    ~CParlaneHashedPassword() override;

    std::uint32_t GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                               std::size_t& size) const override;
    std::size_t GetSize() const override;
    std::unique_ptr<CParlaneData> Clone() const override;
    std::unique_ptr<CParlaneData> CreateMinimum() const override;
    std::unique_ptr<CParlaneData> CreateMaximum() const override;
    std::unique_ptr<CParlaneData> CreateStep() const override;

    /// False: hashing failed, and the value must not be sent.
    bool HasDigest() const { return GetSize() != 0; }
    /// The salt's characters and its NUL.
    std::size_t GetSaltLength() const { return m_salt.size(); }
    /// Copies the salt and its NUL into a buffer of exactly that length; does nothing for any other length.
    void GetSalt(char* buffer, std::size_t length) const;

private:
    bool Hash(const CSecret& first, const CSecret& second, int mode, DigestText& digest) const;

    DigestText m_digest{};
    std::array<char, kSaltLength + 1> m_salt{};
};

/// Seeds the C library's generator from the operating system. Done before every salt: whatever was seeded in
/// between (scrambling a password seeds with the clock) cannot make salts come again.
void SeedSaltGenerator();

/// Sixteen printable characters, blank to right brace, off the C library's generator.
std::string MakeSalt();

} // namespace ruvo
