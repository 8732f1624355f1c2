#include "tools/sites/site.h"

#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "platform/sites_folder.h"
#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

namespace {

/// Takes the place of the machine's registry where the system has none.
constexpr std::string_view kNoSite = "registry.ini";

std::string Shown(const std::string& path) {
    return SystemTextToUtf8(DisplayPath(path));
}

bool IsSiteFile(const SFolderEntry& entry) {
    const SPathParts parts = SplitPath(entry.name);
    return !entry.isFolder && !parts.name.empty() && EqualIniNames(parts.extension, ".ini") &&
           !EqualIniNames(entry.name, kNoSite);
}

} // namespace

CSite::CSite(std::string fullIniPath)
    : m_iniPath(std::move(fullIniPath)), m_name(SystemTextToUtf8(SplitPath(m_iniPath).name)),
      m_environment(ApplySiteEnvironment(m_iniPath)), m_places(ReadSitePlaces(m_iniPath)) {
    if (!m_places) {
        m_failure = Shown(m_iniPath) + ": the file cannot be read, or names a path that cannot be resolved";
    }
}

SSiteFiles FindSites(const std::string& folder) {
    SSiteFiles sites;
    sites.folder = OwnSpelling(FullFolderPath(folder.empty() ? SitesFolder() : folder));
    std::vector<SFolderEntry> entries;
    if (sites.folder.empty() || !ListFolder(sites.folder, entries)) {
        sites.failure = Shown(sites.folder.empty() ? folder : sites.folder) +
                        ": the folder does not exist, or this user cannot read it";
        return sites;
    }
    for (const SFolderEntry& entry : entries) {
        if (IsSiteFile(entry)) {
            sites.iniPaths.push_back(sites.folder + "\\" + entry.name);
        }
    }
    std::ranges::sort(sites.iniPaths);
    return sites;
}

} // namespace ruvo
