// The environment that a site's visits have for the comms server: SITE.env beside SITE.ini.
#pragma once

#include "tools/ini/diagnostics.h"

#include <string>
#include <vector>

namespace ruvo {

/// What was found wrong with a site's environment, by line.
struct SSiteEnvironment {
    std::string path; ///< as the INI file's, with the ending .env
    std::vector<SDiagnostic> diagnostics;
};

/// Gives this process the environment that a visit of the site would have: lines of NAME=value, as they
/// stand; empty lines and those that begin with "#" are passed over. What run-site would refuse is not taken,
/// and nothing is that another user may have written, since it decides which libraries are loaded. Within
/// run-site, which has read the file, nothing is left to do.
SSiteEnvironment ApplySiteEnvironment(const std::string& iniPath);

} // namespace ruvo
