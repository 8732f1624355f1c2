// The relays of a site, joined from its INI file, the records of its visits and its day files. All text is
// UTF-8.
#pragma once

#include "tools/command.h"
#include "tools/sites/site.h"
#include "tools/sites/site_visits.h"

#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// What is not known is empty.
struct SSiteRelay {
    SRelayVisit visit;
    std::string description; ///< as its newest day file has it
    std::string model;       ///< likewise
    std::string lastFile;    ///< name of the newest day file
    std::string lastEvent;   ///< "2026-11-16T03:12:01.234", the latest real time in it, by the relay's clock

    /// Whether the text is part of anything that it is called by; ASCII letters without case.
    [[nodiscard]] bool Matches(std::string_view text) const;
};

struct SSiteRelays {
    std::string site;
    std::vector<SSiteRelay> relays;    ///< in the order of the INI file
    std::vector<std::string> failures; ///< what could not be read; files are already reported
    bool isWhole = true;               ///< everything could be read
};

/// Reports day files that cannot be read.
[[nodiscard]] SSiteRelays ReadSiteRelays(const CSite& site, SConsole& console);

} // namespace ruvo
