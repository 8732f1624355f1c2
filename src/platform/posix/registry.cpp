#include "platform/registry.h"

#include "platform/environment.h"
#include "platform/ini_text.h"
#include "platform/text_file.h"

#include <charconv>

namespace ruvo {

namespace {

// The file that replaces the user's part; empty when no folder for it is known.
std::string UserFile() {
    constexpr const char* kInConfigFolder = "/ruvo/registry.ini";
    if (const auto named = EnvironmentValue("RUVO_REGISTRY_USER")) {
        return *named;
    }
    if (const auto config = EnvironmentValue("XDG_CONFIG_HOME"); config && config->starts_with('/')) {
        return *config + kInConfigFolder;
    }
    const auto home = EnvironmentValue("HOME");
    return home ? *home + "/.config" + kInConfigFolder : std::string();
}

// The key's default value is written "=text", or "@=text" as registry exports write it.
const SIniEntry* FindValue(const CIniText& ini, std::string_view keyPath, std::string_view valueName) {
    const SIniEntry* const entry = ini.FindEntry(keyPath, valueName);
    return entry == nullptr && valueName.empty() ? ini.FindEntry(keyPath, "@") : entry;
}

// The four bytes of "dword:" and up to eight hexadecimal digits; none for any other text.
std::optional<std::string> NumberBytes(std::string_view text) {
    constexpr std::string_view kMark = "dword:";
    constexpr std::size_t kMostDigits = 8;
    if (!EqualIniNames(text.substr(0, kMark.size()), kMark) || text.size() > kMark.size() + kMostDigits) {
        return std::nullopt;
    }
    const std::string_view digits = text.substr(kMark.size());
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    if (error != std::errc{} || end != digits.data() + digits.size()) {
        return std::nullopt;
    }
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>((number >> shift) & 0xFF);
    }
    return bytes;
}

} // namespace

std::string RegistryPlace(ERegistryRoot root) {
    return root == ERegistryRoot::CurrentUser
               ? UserFile()
               : EnvironmentValue("RUVO_REGISTRY_MACHINE").value_or("/etc/ruvo/registry.ini");
}

std::optional<std::string> ReadRegistryValue(ERegistryRoot root, std::string_view keyPath,
                                             std::string_view valueName, std::size_t capacity) {
    std::string text;
    if (!ReadTextFile(RegistryPlace(root), text)) {
        return std::nullopt;
    }
    const CIniText ini = CIniText::Parse(text);
    const SIniEntry* const entry = FindValue(ini, keyPath, valueName);
    if (entry == nullptr || !entry->value) {
        return std::nullopt;
    }
    std::string bytes = NumberBytes(*entry->value).value_or(*entry->value);
    return bytes.size() <= capacity ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace ruvo
