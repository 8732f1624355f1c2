// How one run of the extractor went, and what that means for the status of its visit.
#pragma once

#include "ledger/run_watch.h"
#include "platform/child_program.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// The exit status of a visit. Another number is that of an extractor that crashed.
enum class EVisitStatus : int {
    Good = 0,
    Problems = 1,  ///< the run has logged some
    Refused = 2,   ///< the configuration allows no visit, or something was reported beside the log
    Ended = 3,     ///< by a request to end
    IsVisited = 4, ///< another visit of the site is going on; this one did nothing
};

struct SRunOutcome {
    SChildEnd end;
    bool hasPrinted = false;
    std::optional<SSeenRun> record;
    std::string logged;                              ///< what the log has got meanwhile, whoever wrote it
    std::map<std::string, std::uint64_t> mutedLines; ///< of these: about links of muted relays, by key
    std::optional<SVisitLine> otherVisit;            ///< of the same site, still going on
};

/// The record has the say. Without one, the extractor did not get as far, or cannot keep one: then the log.
[[nodiscard]] int StatusOfRun(const SRunOutcome& outcome);

/// The keys of the relays from which no answer came. None of a run that did not end by itself: then it is not
/// known why.
[[nodiscard]] std::vector<std::string> RelaysWithoutAnswer(const SRunOutcome& outcome);

/// The status of several attempts, of which each later one visits what did not answer in the one before. A
/// relay that a later one has reached counts as reached, and its lines of before are none of a problem.
[[nodiscard]] int StatusOfAttempts(std::vector<SRunOutcome> attempts);

/// The one that says more of what is wrong.
[[nodiscard]] int WorseStatus(int first, int second);

} // namespace ruvo
