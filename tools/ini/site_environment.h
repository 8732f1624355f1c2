// The environment of a site's comms server: SITE.env next to SITE.ini.
#pragma once

#include "tools/ini/diagnostics.h"

#include <string>
#include <vector>

namespace ruvo {

/// Warnings about a site's environment file, by line.
struct SSiteEnvironment {
    std::string path; ///< of the INI file, with the extension .env
    std::vector<SDiagnostic> diagnostics;
};

/// Sets the environment of this process as a visit of the site would: literal lines of NAME=value; empty
/// lines and lines that start with "#" are ignored. Lines that run-site refuses are ignored, and so is a file
/// that another user may have written, because it decides which libraries are loaded. Does nothing within
/// run-site, which has read the file already.
SSiteEnvironment ApplySiteEnvironment(const std::string& iniPath);

} // namespace ruvo
