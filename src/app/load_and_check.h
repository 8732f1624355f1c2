// From the path of an INI file to a configuration that a run can trust.
#pragma once

#include "config/result_code.h"
#include "config/run_context.h"

#include <string>

namespace ruvo {

/// Loads and checks the INI file, resolves destination and error log, and proves that they can be written. A
/// relative path counts from the working directory. From the moment the log path is known the error log
/// works.
EResultCode LoadAndCheck(CRunContext& context, const std::string& iniPath, bool checkOnly);

} // namespace ruvo
