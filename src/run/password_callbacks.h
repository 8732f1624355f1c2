// How the run answers the link when a relay asks for its password.
#pragma once

#include "link/login/password_request.h"

#include <cstdint>

namespace ruvo {

/// Supplies the current password on the first request; on every later call logs its outcome and gives
/// up.
int PasswordCallback(const SPasswordRequest& request, char** buffer, std::uint32_t maxLength,
                     std::uint32_t* noNotify, int code, std::int32_t extra);

/// Notes that the relay accepted the password.
int PasswordAcceptedCallback(const char* model);

} // namespace ruvo
