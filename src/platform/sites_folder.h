// Where the INI files of a machine's sites are.
#pragma once

#include <string>

namespace ruvo {

/// The folder for the sites' INI files, as the package or the installer has it. It may be missing.
std::string SitesFolder();

} // namespace ruvo
