// A copy of a site's INI file with some of its relays alone, for a visit of these.
#pragma once

#include "tools/ini/site_places.h"

#include <string>
#include <vector>

namespace ruvo {

/// Removed when this goes. One that a killed visit of the site has left is replaced.
class CRetryFile {
public:
    /// In the folder of the locks, for this user alone.
    CRetryFile();
    CRetryFile(const CRetryFile&) = delete;
    CRetryFile& operator=(const CRetryFile&) = delete;
    ~CRetryFile() { Remove(); }

    /// Writes the copy of the file, whose places these are, with the relays of these keys alone. Returns why
    /// that has failed; empty when it is there.
    [[nodiscard]] std::string Make(const std::string& iniPath, const SSitePlaces& places,
                                   const std::vector<std::string>& keys);
    void Remove() const;

    [[nodiscard]] const std::string& Path() const { return m_path; }

private:
    std::string m_path; ///< full; empty when there is no such folder
};

/// The file's bytes without the other relays of those that a visit reaches, and without their passwords.
[[nodiscard]] std::string IniWithRelays(std::string bytes, const SSitePlaces& places,
                                        const std::vector<std::string>& keys);

} // namespace ruvo
