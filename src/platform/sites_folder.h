// Where the INI files of a machine's sites are, and what belongs to them.
#pragma once

#include <string>

namespace ruvo {

/// The folder for the sites' INI files, as the package or the installer has it. It may be missing.
std::string SitesFolder();

/// The folder for the programs that run after a visit, where only who may replace this program can put any.
/// It may be missing.
std::string AfterVisitFolder();

} // namespace ruvo
