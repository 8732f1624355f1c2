// The environment of a site's comms server: SITE.env next to SITE.ini.
#pragma once

#include "tools/ini/diagnostics.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// What came of a site's environment file.
struct SSiteEnvironment {
    std::string path;                                         ///< of the INI file, with the extension .env
    std::vector<SDiagnostic> diagnostics;                     ///< warnings, by line
    std::map<std::string, std::optional<std::string>> before; ///< what was set, with its earlier value
};

/// For what the environment is set: a variable of the dynamic loader has come too late for this process.
enum class EEnvironmentOf : std::uint8_t { ThisProgram, ItsChildren };

/// Sets the environment of this process as a visit of the site would: literal lines of NAME=value; empty
/// lines and lines that start with "#" are ignored. Lines that a visit refuses are ignored, and so is a file
/// that another user may have written, because it decides which libraries are loaded. Does nothing within
/// the site's own visit, which has read the file already.
SSiteEnvironment ApplySiteEnvironment(const std::string& iniPath,
                                      EEnvironmentOf use = EEnvironmentOf::ThisProgram);

/// Takes that back, so that another site can follow in the same process.
void LeaveSiteEnvironment(const SSiteEnvironment& environment);

} // namespace ruvo
