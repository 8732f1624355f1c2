// Who works here.
#pragma once

#include <string>

namespace ruvo {

/// The user to whom a folder belongs, or the nearest one above it that exists, when this process may write
/// the files of all users and that user is another: what it made there would be out of the user's reach.
/// Empty otherwise.
std::string UserToBecome(const std::string& folder);

} // namespace ruvo
