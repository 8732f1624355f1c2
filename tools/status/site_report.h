// The status of sites with the verdict on each, for one site and for all sites of a folder.
#pragma once

#include "tools/sites/shared_by_sites.h"
#include "tools/status/status_options.h"
#include "tools/status/verdict.h"

#include <string>
#include <vector>

namespace ruvo {

struct SSiteReport {
    std::string name; ///< UTF-8
    std::string ini;  ///< in the system's own form, UTF-8; empty where none names the site
    SSiteStatus status;
    SVerdict verdict;
};

/// Of an INI file, in the environment of its visits. One that cannot be read is unknown.
[[nodiscard]] SSiteReport ReadSiteReport(const std::string& fullIniPath, const SStatusOptions& options,
                                         SSharedBySites& shared, SConsole& console);

struct SAllSites {
    std::string folder;                ///< in the system's own form, UTF-8
    std::vector<SSiteReport> sites;    ///< the worst first
    std::vector<std::string> failures; ///< of the whole

    /// The worst of all; unknown without a site.
    [[nodiscard]] EState State() const;
};

/// Of the machine's folder for sites when none is given. Of a choice of relays, only sites that have one.
[[nodiscard]] SAllSites ReadAllSites(const std::string& folder, const SStatusOptions& options,
                                     SConsole& console);

} // namespace ruvo
