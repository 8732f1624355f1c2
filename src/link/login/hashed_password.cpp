#include "link/login/hashed_password.h"

#include "base/text.h"
#include "model/values/parlane_integers.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>

namespace ruvo {

namespace {

constexpr char kFirstSaltCharacter = ' ';
constexpr int kSaltCharacters = '}' - kFirstSaltCharacter + 1; // the tilde is not among them
static_assert(kSaltCharacters == 94);

// Names and passwords arrive filled up with blanks; the relay knows them without.
std::string_view WithoutTrailingBlanks(std::string_view text) {
    return TrimEnd(text, kWhiteSpace);
}

std::span<const std::uint8_t> BytesOf(const char* text, std::size_t count) {
    return {reinterpret_cast<const std::uint8_t*>(text), count};
}

} // namespace

void SeedSaltGenerator() {
    std::random_device device;
    std::srand(device());
}

std::string MakeSalt() {
    std::string salt(kSaltLength, '\0');
    std::ranges::generate(salt, [] {
        return static_cast<char>(kFirstSaltCharacter +
                                 std::rand() % kSaltCharacters); // as the relays know it
    });
    return salt;
}

CParlaneHashedPassword::CParlaneHashedPassword(std::string_view first, std::string_view second, int mode)
    : CParlaneData(kTypePassword) {
    // A salt is drawn in every mode, though only one sends it.
    SeedSaltGenerator();
    MakeSalt().copy(m_salt.data(), kSaltLength);
    const CSecret firstText(WithoutTrailingBlanks(first));
    const CSecret secondText(WithoutTrailingBlanks(second));
    if (!Hash(firstText, secondText, mode, m_digest)) {
        m_digest.fill('\0');
    }
}

CParlaneHashedPassword::~CParlaneHashedPassword() {
    WipeBytes(m_digest.data(), m_digest.size());
}

bool CParlaneHashedPassword::Hash(const CSecret& first, const CSecret& second, int mode,
                                  DigestText& digest) const {
    // Once, here, so that a missing provider is reported once and not for each digest.
    if (CryptoLibrary::Initialize() != CryptoLibrary::kLoaded) {
        return false;
    }
    if (mode == kHashText) {
        return CryptoLibrary::MakeTextDigest(first.Text(), digest);
    }
    const std::span<const std::uint8_t> password = BytesOf(second.Text(), second.Length());
    if (mode != kHashSalted) {
        return CryptoLibrary::MakeKeyedDigest(password, first.Text(), digest);
    }
    DigestText unsalted{};
    const bool made =
        CryptoLibrary::MakeKeyedDigest(password, first.Text(), unsalted) &&
        CryptoLibrary::MakeKeyedDigest(BytesOf(unsalted.data(), unsalted.size()), m_salt.data(), digest);
    WipeBytes(unsalted.data(), unsalted.size()); // it is enough to log in with any salt
    return made;
}

std::uint32_t CParlaneHashedPassword::GetWireBytes(std::span<std::uint8_t> buffer, std::uint32_t& typeCode,
                                                   std::size_t& size) const {
    return PutWireBytes(BytesOf(m_digest.data(), GetSize()), buffer, typeCode, size);
}

std::size_t CParlaneHashedPassword::GetSize() const {
    return std::strlen(m_digest.data()); // the last character is a NUL in every case
}

std::unique_ptr<CParlaneData> CParlaneHashedPassword::Clone() const {
    return std::make_unique<CParlaneHashedPassword>(*this);
}
std::unique_ptr<CParlaneData> CParlaneHashedPassword::CreateMinimum() const {
    return std::make_unique<CParlaneUint>(0U, 1U);
}
std::unique_ptr<CParlaneData> CParlaneHashedPassword::CreateMaximum() const {
    return std::make_unique<CParlaneUint>(0xFFU, 1U);
}
std::unique_ptr<CParlaneData> CParlaneHashedPassword::CreateStep() const {
    return std::make_unique<CParlaneUint>(1U, 1U);
}

void CParlaneHashedPassword::GetSalt(char* buffer, std::size_t length) const {
    if (length == m_salt.size()) {
        std::ranges::copy(m_salt, buffer);
    }
}

} // namespace ruvo
