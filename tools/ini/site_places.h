// Where a run of an INI file writes, and which relays it visits. Nothing is made or written to find out.
#pragma once

#include "config/visited_relays.h"

#include <optional>
#include <string>
#include <vector>

namespace ruvo {

struct SSitePlaces {
    std::string events; ///< full paths
    std::string log;
    std::vector<SVisitedRelay> relays;
    std::string linkName =
        {}; ///< the COM port's or the modem's, as in the error log, UTF-8; empty for Ethernet
};

/// None when the file cannot be read, or a path cannot be resolved.
[[nodiscard]] std::optional<SSitePlaces> ReadSitePlaces(const std::string& fullIniPath);

} // namespace ruvo
