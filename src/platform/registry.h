// The registry, read only. On POSIX two files in INI form replace it, the section being the key path:
// per user $XDG_CONFIG_HOME/ruvo/registry.ini (or the file RUVO_REGISTRY_USER names), per machine
// /etc/ruvo/registry.ini (or RUVO_REGISTRY_MACHINE). "dword:00000001" is a number, any other text its bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ruvo {

enum class ERegistryRoot : std::uint8_t { CurrentUser, LocalMachine };

/// The bytes of a registry value, whatever its type; a number is its four bytes, little-endian. An empty
/// `valueName` is the key's default value (in the files a line "=text" or "@=text"). None when key or value
/// is missing, or has more than `capacity` bytes.
std::optional<std::string> ReadRegistryValue(ERegistryRoot root, std::string_view keyPath,
                                             std::string_view valueName, std::size_t capacity);

/// Where that part of the registry is kept: a file, or the system's name for it. Empty where there is none.
std::string RegistryPlace(ERegistryRoot root);

} // namespace ruvo
