// Many events from a seed: the same seed produces the same events everywhere.
#pragma once

#include "sim/file/substation.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ruvo::sim {

struct SGeneratorPlan {
    std::size_t count = 0;
    std::uint64_t seed = 1;
    std::vector<std::uint8_t> kinds; ///< numbers of kEventKinds, chosen evenly; never empty
};

/// Appends the events to the relay's. They refer to the relay's own cells and records. The result is empty,
/// or the reason why events of a kind cannot be made for this relay.
std::string GenerateEvents(const SGeneratorPlan& plan, SRelay& relay);

} // namespace ruvo::sim
