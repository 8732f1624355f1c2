#include "platform/registry.h"

#include "platform/native_text.h"
#include "platform/windows/wide_text.h"

namespace ruvo {

namespace {

// An open key of the registry, or none.
class CKey {
public:
    CKey(HKEY root, const std::string& path) {
        if (RegOpenKeyExW(root, Wide(path).c_str(), 0, KEY_READ, &m_key) != ERROR_SUCCESS) {
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
        DWORD type = REG_NONE;
        // Texts come in the system's code page, and their length counts in it.
        const bool read = m_key != nullptr && RegQueryValueExA(m_key, name.c_str(), nullptr, &type, buffer,
                                                               &size) == ERROR_SUCCESS;
        bytes.resize(read ? size : 0);
        bytes = type == REG_SZ || type == REG_EXPAND_SZ ? TextOfStored(bytes) : bytes;
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
