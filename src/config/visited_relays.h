// The relays that a run visits, as its records and those who read them name them.
#pragma once

#include "config/ruvo_config.h"

#include <string>
#include <vector>

namespace ruvo {

struct SVisitedRelay {
    std::string key;       ///< "RV001"
    std::string address;   ///< the key's value
    std::string link = {}; ///< "serial", "modem" or "ethernet"
};

/// Those of the selected link, in the order of visits.
[[nodiscard]] std::vector<SVisitedRelay> VisitedRelays(const CRuvoConfig& config);

} // namespace ruvo
