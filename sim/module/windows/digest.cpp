#include "sim/module/digest.h"

#include <windows.h>

#include <bcrypt.h>

namespace ruvo::sim {

namespace {

// The functions take bytes to read through pointers to bytes to write.
UCHAR* Input(std::span<const unsigned char> bytes) {
    return const_cast<UCHAR*>(bytes.data());
}

// A SHA-256 provider of the system's, for digests with a key or without.
class CSha256 {
public:
    explicit CSha256(ULONG flags) {
        if (BCryptOpenAlgorithmProvider(&m_algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, flags) < 0) {
            m_algorithm = nullptr;
        }
    }
    CSha256(const CSha256&) = delete;
    CSha256& operator=(const CSha256&) = delete;
    ~CSha256() {
        if (m_algorithm != nullptr) {
            BCryptCloseAlgorithmProvider(m_algorithm, 0);
        }
    }

    bool Make(std::span<const unsigned char> key, std::span<const unsigned char> bytes, Digest& digest) {
        BCRYPT_HASH_HANDLE hash = nullptr;
        const auto keySize = static_cast<ULONG>(key.size());
        if (m_algorithm == nullptr ||
            BCryptCreateHash(m_algorithm, &hash, nullptr, 0, Input(key), keySize, 0) < 0) {
            return false;
        }
        const bool made = BCryptHashData(hash, Input(bytes), static_cast<ULONG>(bytes.size()), 0) >= 0 &&
                          BCryptFinishHash(hash, digest.data(), static_cast<ULONG>(digest.size()), 0) >= 0;
        BCryptDestroyHash(hash);
        return made;
    }

private:
    BCRYPT_ALG_HANDLE m_algorithm = nullptr;
};

} // namespace

bool MakeKeyed(std::span<const unsigned char> key, std::span<const unsigned char> bytes, Digest& digest) {
    return CSha256(BCRYPT_ALG_HANDLE_HMAC_FLAG).Make(key, bytes, digest);
}

bool MakePlain(std::span<const unsigned char> bytes, Digest& digest) {
    return CSha256(0).Make({}, bytes, digest);
}

} // namespace ruvo::sim
