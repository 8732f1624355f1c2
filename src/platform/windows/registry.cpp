#include "platform/registry.h"

#include "platform/windows/system.h"

namespace ruvo {

namespace {

// An open key of the registry, or none.
class CKey {
public:
    CKey(HKEY root, const std::string& path) {
        if (RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, &m_key) != ERROR_SUCCESS) {
            m_key = nullptr;
        }
    }
    CKey(const CKey&) = delete;
    CKey& operator=(const CKey&) = delete;
    ~CKey() {
        if (m_key != nullptr) {
            RegCloseKey(m_key);
        }
    }

    bool Read(const std::string& name, std::string& bytes) const {
        auto size = static_cast<DWORD>(bytes.size());
        auto* const buffer = reinterpret_cast<BYTE*>(bytes.data());
        const bool read = m_key != nullptr && RegQueryValueExA(m_key, name.c_str(), nullptr, nullptr, buffer,
                                                               &size) == ERROR_SUCCESS;
        bytes.resize(read ? size : 0);
        return read;
    }

private:
    HKEY m_key = nullptr;
};

} // namespace

std::optional<std::string> ReadRegistryValue(ERegistryRoot root, std::string_view keyPath,
                                             std::string_view valueName, std::size_t capacity) {
    const CKey key(root == ERegistryRoot::CurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE,
                   std::string(keyPath));
    std::string bytes(capacity, '\0');
    return key.Read(std::string(valueName), bytes) ? std::optional(std::move(bytes)) : std::nullopt;
}

std::string RegistryPlace(ERegistryRoot root) {
    return root == ERegistryRoot::CurrentUser ? "HKEY_CURRENT_USER" : "HKEY_LOCAL_MACHINE";
}

} // namespace ruvo
