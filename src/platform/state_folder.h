// Where a program keeps what it has to remember from one run to the next.
#pragma once

#include <string>

namespace ruvo {

/// The folder that RUVO_STATE_DIR names; else the package's or installer's, where this user may write it;
/// else one of the user's own. It is not made here. Empty when there is none.
std::string StateFolder();

/// Makes the folder and those above it that are missing, for this user alone. False when it is not there
/// afterwards, or others could put something into it, as far as the system tells by a simple mark.
bool MakePrivateFolder(const std::string& folder);

/// The folder's full path with all links resolved; empty when it is not there.
std::string ResolvedFolder(const std::string& folder);

} // namespace ruvo
