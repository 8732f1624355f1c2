// The programs that run after a visit.
#pragma once

#include "tools/ini/site_places.h"
#include "tools/visit/run_outcome.h"
#include "tools/visit/visit_control.h"
#include "tools/visit/visit_output.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace ruvo {

/// A visit in numbers, over all its attempts.
struct SVisitCounts {
    std::uint64_t relays = 0;
    std::uint64_t reached = 0;
    std::uint64_t taken = 0;
    std::uint64_t stored = 0;
    std::uint64_t lost = 0;
    std::uint64_t setAside = 0;
    std::uint64_t waiting = 0;
};
[[nodiscard]] SVisitCounts CountVisit(const std::vector<SRunOutcome>& attempts, const SSitePlaces& places);

/// The folder of these programs: that of RUVO_AFTER_VISIT_DIR, else the system's.
[[nodiscard]] std::string ProgramsFolder();

/// The programs of a folder.
struct SAfterPrograms {
    std::vector<std::string> paths;   ///< in the order of their names
    std::vector<std::string> refused; ///< those that others than root could have written, or replaced
};
/// A copy that an editor or a package has left is none of them.
[[nodiscard]] SAfterPrograms FindAfterPrograms(const std::string& folder);

/// What they are told of the visit.
struct SAfterVisit {
    std::vector<std::pair<std::string, std::string>> variables; ///< counts and paths, never a relay's text
    std::string digest;                                         ///< on standard input
};
/// Runs one after the other; one that takes longer than `most` is killed. A failure is said, no more.
void RunAfterVisit(const SAfterPrograms& programs, const SAfterVisit& visit, CVisitControl& control,
                   CVisitOutput& output, std::chrono::milliseconds most = std::chrono::minutes(2));

} // namespace ruvo
