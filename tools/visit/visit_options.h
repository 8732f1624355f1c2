// Options of a visit, which its schedule passes on.
#pragma once

#include "tools/command.h"
#include "tools/visit/visit.h"

#include <optional>

namespace ruvo {

inline constexpr SOption kRetryOption{
    EOptionKind::Text, "--retry",
    "visit relays from which no answer came up to N times again (default: 0; at most 9)", "N"};
inline constexpr SOption kAfterOption{EOptionKind::Text, "--after",
                                      "pause before each further attempt, such as 90s or 1h (default: 10m)",
                                      "LENGTH"};
inline constexpr SOption kEventLogOption{EOptionKind::Choice, "--event-log",
                                         "Windows: visits that are written into the event log (default: all)",
                                         "all|bad|none"};

inline constexpr std::string_view kRetryMistake =
    "expected a number from 0 to 9 for --retry, and a length such as 90s or 10m for --after";

/// None for values that a visit does not take.
[[nodiscard]] std::optional<SRetry> ReadRetry(const CArguments& arguments);

} // namespace ruvo
