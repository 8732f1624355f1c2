// The extraction proper: one relay's pending events into its day file.
#pragma once

#include "extraction/extraction_report.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace ruvo {

class CVisitCustody;

/// What one visit takes at most: a relay may never run out of events, and without a journal what is taken
/// has to fit into memory. The rest waits in the relay.
struct SVisitLimits {
    std::size_t events = 1'000'000;
    std::size_t bytes =
        std::size_t{256} * 1024 * 1024; ///< in the file; a relay chooses how long its records are
    /// Set, from any thread, when the run is to end; null when it never is.
    const std::atomic<bool>* isEnding = nullptr;
};
/// With less room on the disk a relay keeps its events.
inline constexpr std::uint64_t kLeastFreeSpace = std::uint64_t{64} * 1024;
/// Likewise: a visit may have to make a folder and a file.
inline constexpr std::uint64_t kLeastFreeFiles = 2;

inline constexpr std::int32_t kNoEventLimit = -1;

/// Reads the pending events of the relay that the link addresses and appends them to the relay's day file
/// below `eventRoot`. `deviceAddress` goes into every record. `maxEvents` ends the visit after so many
/// records. Throws CStatus when a request was aborted; `report` is complete even then. `custody` keeps what
/// is taken; its caller ends it when the log has what the report says.
void ExtractEventsToFile(std::uint32_t deviceAddress, const std::string& eventRoot, std::int32_t maxEvents,
                         SExtractionReport* report = nullptr, SVisitLimits limits = {},
                         CVisitCustody* custody = nullptr);

} // namespace ruvo
