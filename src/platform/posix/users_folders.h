// Folders of the system that belong to the user alone.
#pragma once

#include "platform/posix/place.h"

#include <string>

namespace ruvo {

/// Opens a folder; closed when there is none.
CDescriptor OpenFolder(const std::string& path);
/// True when no other user can create or remove files in the folder.
bool IsPrivateFolder(const CDescriptor& folder);
/// Makes the folder and those above it that are missing, for their owner alone.
void MakeFolders(const std::string& path);
/// Where the user's programs keep their state; the same for a login, cron and a service.
std::string UsersStateFolder();

} // namespace ruvo
