// Texts that several of the run's log lines share.
#pragma once

#include "config/run_context.h"

#include <string>

namespace ruvo {

/// "Connection details - ..." of the relay being handled, by the configured link type, with a full stop.
std::string ConnectionText(const CRunContext& context);

} // namespace ruvo
