// The sites of a machine: one INI file each. All text is UTF-8, paths are full.
#pragma once

#include "tools/ini/site_environment.h"
#include "tools/ini/site_places.h"

#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// One site, in the environment of its visits: as long as this lives, what is asked of the system (state
/// folder, registry) is answered as to them. There is one at a time.
class CSite {
public:
    explicit CSite(std::string fullIniPath);
    CSite(const CSite&) = delete;
    CSite& operator=(const CSite&) = delete;
    ~CSite() { LeaveSiteEnvironment(m_environment); }

    /// The INI file's name without its extension.
    [[nodiscard]] const std::string& Name() const { return m_name; }
    [[nodiscard]] const std::string& IniPath() const { return m_iniPath; }
    /// None when the file cannot be read, or names a path that cannot be resolved: Failure says so.
    [[nodiscard]] const std::optional<SSitePlaces>& Places() const { return m_places; }
    [[nodiscard]] const std::string& Failure() const { return m_failure; }

private:
    std::string m_iniPath;
    std::string m_name;
    SSiteEnvironment m_environment;
    std::optional<SSitePlaces> m_places;
    std::string m_failure; ///< with the path
};

/// The INI files of a folder.
struct SSiteFiles {
    std::string folder;                ///< full path
    std::vector<std::string> iniPaths; ///< full paths, sorted by name
    std::string failure;               ///< why the folder cannot be listed; empty when it can
};

/// Of the machine's folder for sites when none is given. Its registry.ini is no site.
[[nodiscard]] SSiteFiles FindSites(const std::string& folder = {});

} // namespace ruvo
