// The probe that makes a relay ask for its password before any event is read.
#pragma once

#include "config/run_context.h"

namespace ruvo {

/// True when the relay answered and the password, if it asked for one, was accepted. A failure is logged.
bool TestDeviceConnection(const CRunContext& context);

} // namespace ruvo
