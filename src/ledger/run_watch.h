// Looks at the record of a run from outside: while it grows, and when the run has ended. It changes nothing.
#pragma once

#include "ledger/visit_history.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ruvo {

struct SSeenRun {
    SVisitLine line;
    ERunState state = ERunState::Ended;
};

/// Of the runs that begin once it is made. Looks where a run of this user keeps its record.
class CRunWatch {
public:
    explicit CRunWatch(const std::string& eventRoot);

    /// The run of that process, as far as it is recorded. None before its record begins, when it keeps none,
    /// and when it cannot be read.
    [[nodiscard]] std::optional<SSeenRun> Find(std::uint64_t process) const;

private:
    std::string m_folder;
    std::optional<std::uint64_t> m_before; ///< the largest number that was there, where that is known
};

/// The run of the INI file that is going on, if there is one.
[[nodiscard]] std::optional<SVisitLine> FindRunningVisit(const std::string& eventRoot,
                                                         const std::string& iniPath);

} // namespace ruvo
