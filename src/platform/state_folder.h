// Where a program keeps its state from one run to the next.
#pragma once

#include <string>
#include <vector>

namespace ruvo {

/// The folder that RUVO_STATE_DIR names; else the package's, where this user may write it, or the Windows
/// installer's, where there is one; else one of the user's own. It is not made here. Empty when there is
/// none.
std::string StateFolder();

/// Where a reader looks for it, who may be another user than the one who runs the program.
std::vector<std::string> StateFoldersToRead();

/// Makes the folder and those above it that are missing, for this user alone. False when it does
/// not exist afterwards, or another user could create files in it, as far as simple permissions show.
bool MakePrivateFolder(const std::string& folder);

/// The folder's full path with all links resolved; empty when it does not exist.
std::string ResolvedFolder(const std::string& folder);

} // namespace ruvo
