// The probe that makes a relay ask for its password before any event is read.
#pragma once

#include "config/run_context.h"

#include <cstdint>
#include <string>

namespace ruvo {

class CP32Wrap;

/// How a relay took the probe.
enum class [[nodiscard]] ELoginProbe : std::uint8_t{
    Accepted, ///< it asked for a password, and took it
    NotAsked, ///< it asked for none, or knows no login
    NotResponding, ReadFailed, ResetFailed,
    Refused, ///< it asked for a password, and the last answer was no acceptance
};

/// Makes the password of the key's relay the one that the callbacks supply (an empty one if it has none), and
/// clears the outcome of the last login.
void PrepareLogin(const CRuvoConfig& config, const std::string& key);

/// Makes the relay ask for its password. Nothing is logged here.
ELoginProbe ProbeLogin(CP32Wrap& link);

/// True when the relay answered and the password, if it asked for one, was accepted. A failure is logged,
/// unless it comes from the end of the run.
bool TestDeviceConnection(const CRunContext& context);

} // namespace ruvo
