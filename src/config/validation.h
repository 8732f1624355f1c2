// The rules that a loaded configuration has to pass.
#pragma once

#include "config/result_code.h"
#include "config/ruvo_config.h"

namespace ruvo {

/// The code of the first rule that fails, or Success.
[[nodiscard]] EResultCode ValidateConfiguration(const CRuvoConfig& config);

} // namespace ruvo
