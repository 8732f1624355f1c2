// What access lists let whom do, as far as it can be read from them: no group is resolved into its members.
#pragma once

#include "platform/windows/system.h"

#include <string>

namespace ruvo {

/// The security identifier of the user of this process, as text: names of accounts differ with the system's
/// language. Empty when it is not known.
std::string UserIdentifier();

/// Whether the list of a file or folder lets every user, or every one that has logged on, do one of these.
/// True also where there is no list; false where none can be read.
bool LetsEveryUser(const std::string& path, DWORD rights);

/// Whether accounts other than the system, its installer, administrators and the user of this process may do
/// one of these, or may give themselves the right. True also where no list can be read.
bool LetsOthers(const std::string& path, DWORD rights);
/// The same of an open file.
bool LetsOthers(HANDLE file, DWORD rights);

/// The security descriptor, in its text form, of a file that the user of this process owns and only that
/// user, the administrators and the system can open. Empty when the user is not known.
std::string PrivateDescriptorText();

} // namespace ruvo
