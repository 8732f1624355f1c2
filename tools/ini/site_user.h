// As whom root works on a site: as the user of its visits, so that nothing is made that this user cannot
// write.
#pragma once

#include "platform/users.h"
#include "tools/ini/site_places.h"

#include <optional>
#include <string>

namespace ruvo {

struct SSiteUser {
    std::optional<SUser> user; ///< to continue as; none when this process is to go on as it is
    std::string refusal;       ///< why root must not work on the site, UTF-8; empty when it may
};

/// Without places the file cannot be read, or names a path that cannot be resolved.
/// "ruvo" for a site of /etc/ruvo; for another file the owner of its event root, or of the nearest folder
/// above it that exists. That user and root alone may then be able to create or write the file, its .env
/// file, and the folders and links that lead to them; if that user is root, the same applies to the events
/// and the log.
[[nodiscard]] SSiteUser FindSiteUser(const std::string& fullIniPath,
                                     const std::optional<SSitePlaces>& places);

} // namespace ruvo
