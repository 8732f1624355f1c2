// The callbacks that the application registers.
#pragma once

#include "link/login/password_request.h"

#include <cstdint>
#include <span>

namespace ruvo {

/// Called with the facts of each write: user name, cell or pseudo-code, label, the tagged bytes of the time
/// stamp and of the value.
using SecurityEventFunction = void (*)(const char* userName, std::uint16_t code, const char* label,
                                       std::span<const std::uint8_t> timeStamp,
                                       std::span<const std::uint8_t> value);

/// Null where the application registers none.
struct SLinkCallbacks {
    GetPasswordFunction getPassword = nullptr;
    PasswordAcceptedFunction passwordAccepted = nullptr;
    UsernamePasswordFunction usernamePassword = nullptr;
    SecondEditionLoginFunction secondEditionLogin = nullptr;
    LoginAcceptedFunction loginAccepted = nullptr;
    LoginCancelledFunction loginCancelled = nullptr;
    SecurityEventFunction securityEvent = nullptr;
};

/// Process-wide; set before the first request, read by the logins and by the security events.
inline SLinkCallbacks& LinkCallbacks() {
    static SLinkCallbacks callbacks;
    return callbacks;
}

} // namespace ruvo
