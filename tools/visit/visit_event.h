// The entry that a visit leaves in the system's log of events.
#pragma once

#include "platform/event_log.h"
#include "tools/visit/visit_output.h"

#include <cstdint>
#include <string>

namespace ruvo {

struct SVisitEvent {
    ESystemEventKind kind = ESystemEventKind::Information;
    std::uint16_t number = 0; ///< as in the message file of the programs: never renumber
    std::string text;         ///< UTF-8
};

/// By the exit status; after the site and what was reached the entry has what the visit said of problems.
[[nodiscard]] SVisitEvent EventOfVisit(int status, const std::string& site, const std::string& reached,
                                       const SSaid& said);

} // namespace ruvo
