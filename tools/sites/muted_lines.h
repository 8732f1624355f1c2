// Lines of the error log that a mute keeps from alarming anybody.
#pragma once

#include "tools/log_lines.h"
#include "tools/sites/site_visits.h"

namespace ruvo {

/// True for a line about the link to a muted relay. What tells of lost events, damage or a refused password
/// always counts, and so does a line that no run writes.
[[nodiscard]] bool IsMutedLine(const SSiteVisits& visits, const SLogLine& line);

} // namespace ruvo
