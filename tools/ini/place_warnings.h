// Warns about the places that a run writes to: a disk without room, a file system without locks, a state
// folder that cannot be used, or that has events which are in no day file.
#pragma once

#include "platform/files.h"
#include "tools/ini/diagnostics.h"

#include <functional>
#include <string>
#include <vector>

namespace ruvo {

/// A state folder in which a run over this event root could make no journal. Makes nothing to find out.
[[nodiscard]] std::vector<SDiagnostic> FindUnusableStateFolder(const std::string& eventRoot);

/// A file system on which day files cannot be locked. Creates and removes a file in the folder to find out.
[[nodiscard]] std::vector<SDiagnostic> FindMissingLocks(const std::string& eventRoot);

/// Disks of the events, the error log and the journals with less room than a visit needs.
[[nodiscard]] std::vector<SDiagnostic>
FindFullDisks(const std::string& eventRoot, const std::string& logPath,
              const std::function<SFreeSpace(const std::string& path)>& roomAt = FreeSpace);

/// Events of earlier runs that are in no day file: of this event root, of those that are gone, and
/// of those that the INI file named earlier.
[[nodiscard]] std::vector<SDiagnostic> FindLeftoverEvents(const std::string& eventRoot,
                                                          const std::string& iniPath);

} // namespace ruvo
