// Users of this machine, and continuing as another one. Root has to: what it made in the folders of another
// user would be out of that user's reach.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ruvo {

struct SUser {
    std::uint32_t id = 0;
    std::string name; ///< empty for one that this machine does not know
};

/// Whether this process may become any user, and write the files of all. Never where the system has no such
/// user.
bool IsRoot();
/// None when there is no user of that name.
std::optional<SUser> FindUser(const std::string& name);
/// As whom this process acts.
SUser CurrentUser();
/// The user to whom a folder belongs, or the nearest one above it that exists.
std::optional<SUser> OwnerOf(const std::string& folder);

/// Starts this program anew with these arguments, as that user, with its groups, a fresh environment and the
/// root folder, in place of this process; what is buffered is lost. Returns why that has failed.
std::string ContinueAs(const SUser& user, const std::vector<std::string>& arguments);

} // namespace ruvo
