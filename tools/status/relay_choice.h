// What a status is to be about: some relays, some problems.
#pragma once

#include "tools/log_lines.h"
#include "tools/sites/site_visits.h"

#include <string>

namespace ruvo {

struct SSiteStatus;

struct SStatusChoice {
    std::string relay; ///< part of a relay's name, key, address or texts; empty for all relays
    std::string match; ///< part of a problem's line, or of its relay's name; empty for all problems
};

/// Leaves the relays that the choice means, of the day files and of the visits. If it means none, the status
/// gets a failure that says which relays there are.
void ChooseRelays(const SStatusChoice& choice, SSiteStatus& status);

/// Whether a line of the log counts: it is about a relay that was left, or about none in particular, and has
/// the text. `visits` are those of all relays; null where none are known.
[[nodiscard]] bool IsChosenLine(const SStatusChoice& choice, const SSiteStatus& status,
                                const SSiteVisits* visits, const SLogLine& line);

} // namespace ruvo
