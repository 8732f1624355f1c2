// Evaluates a site's status to the verdict that a monitoring system reads.
#pragma once

#include "tools/status/site_status.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ruvo {

/// The values are the exit statuses that monitoring systems know.
enum class EState : std::uint8_t { Good = 0, Warning = 1, Critical = 2, Unknown = 3 };

/// "good", "warning", "critical", "unknown".
[[nodiscard]] std::string_view StateName(EState state);

/// The larger one is worse: unknown may be anything, but is not known to be the worst.
[[nodiscard]] int Severity(EState state);

/// From this number on; 0 turns a threshold off.
struct SThresholds {
    std::uint64_t warnSilent = 14; ///< days
    std::uint64_t criticalSilent = 60;
    std::uint64_t warnProblems = 1;
    std::uint64_t criticalProblems = 0;
    std::int64_t warnVisitAge = 0; ///< seconds
    std::int64_t criticalVisitAge = std::int64_t{36} * 3600;
};

struct SCause {
    EState state = EState::Good;
    std::string text; ///< UTF-8
};

struct SVerdict {
    EState state = EState::Good;
    std::vector<SCause> causes; ///< the worst first; none when all is good
};

/// Adds what the records of visits say.
void EvaluateVisits(const SSiteVisits& visits, const SThresholds& thresholds, SVerdict& verdict);

[[nodiscard]] SVerdict Evaluate(const SSiteStatus& status, const SThresholds& thresholds);

} // namespace ruvo
