// What ended runs have left in the state folder, for people: read only.
#pragma once

#include "ledger/frames.h"
#include "ledger/set_aside_file.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// Events of a visit that wait in a journal for their day file.
struct SWaitingVisit {
    std::string journal;
    SVisitInfo info;
    std::uint32_t events = 0;
};

struct SSetAsideFile {
    std::string path;
    std::optional<SSetAsideHeader> header; ///< none when it makes no sense
    std::size_t events = 0;
    bool isSound = true; ///< without damage
};

/// What is in one event root's folder. Journals of runs that are under way are skipped.
struct SLeftovers {
    std::string folder;
    bool isRead = true; ///< or missing
    std::vector<SWaitingVisit> waiting;
    std::vector<SSetAsideFile> setAside;
    std::vector<std::string> damaged; ///< journals that hold more than could be read, kept ones too

    [[nodiscard]] bool IsEmpty() const { return waiting.empty() && setAside.empty() && damaged.empty(); }
};
[[nodiscard]] SLeftovers ReadLeftovers(const std::string& folder);

} // namespace ruvo
