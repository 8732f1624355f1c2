// Lines of the error log that a mute keeps from alarming anybody.
#pragma once

#include "tools/log_lines.h"
#include "tools/sites/site_visits.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace ruvo {

/// True for a line about the link to a muted relay. What tells of lost events, damage or a refused password
/// always counts, and so does a line that no run writes.
[[nodiscard]] bool IsMutedLine(const SSiteVisits& visits, const SLogLine& line);

/// How many of the lines that a log has got, in the system's encoding, are such lines, by the relay's key.
[[nodiscard]] std::map<std::string, std::uint64_t> CountMutedLines(const SSiteVisits& visits,
                                                                   std::string_view logged);

} // namespace ruvo
