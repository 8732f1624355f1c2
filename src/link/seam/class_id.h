// The identifier that the comms server is registered under. windows/p32ls.idl repeats it for the compiler of
// the interfaces.
#pragma once

#include <string>
#include <string_view>

namespace ruvo {

inline constexpr std::string_view kServerClassId = "{9A69E99F-E86F-455D-B971-355C1139963E}";

/// The registry's key of the class, or of one of its subkeys.
inline std::string ServerClassKey(std::string_view subkey = {}) {
    std::string key = "CLSID\\";
    key += kServerClassId;
    return subkey.empty() ? key : key.append("\\").append(subkey);
}

} // namespace ruvo
