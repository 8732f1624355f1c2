#include "tools/ini/site_user.h"

#include "paths/path_utilities.h"
#include "platform/file_trust.h"
#include "platform/full_path.h"
#include "platform/state_folder.h"
#include "tools/text_encoding.h"

#include <array>

namespace ruvo {

namespace {

constexpr const char* kServicesUser = "ruvo"; // whom the package makes, as the folder of its sites
constexpr const char* kServicesSites = "C:\\etc\\ruvo\\";

std::string Shown(const std::string& path) {
    return EscapeControls(SystemTextToUtf8(DisplayPath(path)));
}

std::string EnvironmentFileOf(const std::string& iniPath) {
    return iniPath.substr(0, iniPath.size() - SplitPath(iniPath).extension.size()) + ".env";
}

/// The first place that others than root and the user can decide on; empty for none.
template <class Places>
std::string FindUnguarded(const Places& places, std::uint32_t user) {
    for (const std::string& place : places) {
        if (!IsGuarded(place, user)) {
            return place;
        }
    }
    return {};
}

SSiteUser Refusal(std::string why) {
    return {std::nullopt, std::move(why)};
}

} // namespace

SSiteUser FindSiteUser(const std::string& fullIniPath, const std::optional<SSitePlaces>& places) {
    if (!IsRoot()) {
        return {};
    }
    if ((ResolvedFolder(ParentFolder(fullIniPath)) + "\\").starts_with(kServicesSites)) {
        const std::optional<SUser> user = FindUser(kServicesUser);
        return user ? SSiteUser{user, ""}
                    : Refusal("there is no user \"" + std::string(kServicesUser) + "\"");
    }
    if (!places) {
        return Refusal(Shown(fullIniPath) +
                       ": the file cannot be read, or names a path that cannot be resolved");
    }
    const std::string events = FullPath(places->events);
    const std::optional<SUser> owner = OwnerOf(events);
    if (!owner) {
        return Refusal("the owner of " + Shown(events) + " is not known");
    }
    if (const std::string file =
            FindUnguarded(std::array{fullIniPath, EnvironmentFileOf(fullIniPath)}, owner->id);
        !file.empty()) {
        return Refusal(Shown(file) + ": users other than root and the owner of " + Shown(events) +
                       " can create, write, replace or redirect it");
    }
    if (owner->id != 0) {
        return {owner, ""};
    }
    const std::string place = FindUnguarded(std::array{events, FullPath(places->log)}, owner->id);
    return place.empty() ? SSiteUser()
                         : Refusal("root would write to " + Shown(place) +
                                   ", which other users can create, write or redirect");
}

} // namespace ruvo
