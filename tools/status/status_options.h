// The options of ruvoctl status that say what is good.
#pragma once

#include "tools/command.h"
#include "tools/status/verdict.h"

#include <string>
#include <vector>

namespace ruvo {

struct SStatusOptions {
    SThresholds thresholds;
    std::string since;                 ///< local time, as in SSiteStatus
    std::vector<std::string> expected; ///< names of relays that must be present
    SStatusChoice choice;
};

/// Reports a mistake and returns false.
[[nodiscard]] bool ParseStatusOptions(const CArguments& arguments, SStatusOptions& options,
                                      SConsole& console);

} // namespace ruvo
