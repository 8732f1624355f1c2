// What a run cannot begin without.
#pragma once

#include <optional>
#include <string>

namespace ruvo {

struct SMissingLibrary {
    std::string message; ///< of the run's message box
    std::string reason;  ///< what was tried, in the system's words
};

/// None when a run can begin. The Ethernet transport needs the RPC library; without it no relay behind a
/// tunnel would ever answer.
std::optional<SMissingLibrary> FindMissingLibrary();

} // namespace ruvo
