// Finds the day files that the arguments name.
#pragma once

#include "tools/clocks/zone_rule.h"
#include "tools/sites/fetched_bytes.h"

#include <memory>
#include <string>
#include <vector>

namespace ruvo {

struct SFoundFile {
    std::string path;  ///< in the system's own form, as typed or below the folder as typed
    std::string relay; ///< from the name of the file, UTF-8
    std::string site;  ///< the name of the INI file or folder that was given; empty for a day file; UTF-8
    const CZoneRule* clock = nullptr;                       ///< as in SEventSource
    std::shared_ptr<const SFetchedBytes> fetched = nullptr; ///< what counts of it; null for all
};

struct SFoundFiles {
    std::vector<SFoundFile> files;
    std::vector<std::string> failures; ///< "PATH: reason" for each that could not be read
};

/// An INI file stands for its event root, the first one where several have the same. A day file is accepted
/// with any other extension; in a folder, all day files at any depth, sorted by path. Links inside a folder
/// are not followed.
[[nodiscard]] SFoundFiles FindDayFiles(const std::vector<std::string>& paths);

/// The name of the day file up to its date; without a date, up to its extension.
[[nodiscard]] std::string RelayOfFileName(const std::string& name);
/// The date in the day file's name, as "2026-11-16"; empty for a name without one.
[[nodiscard]] std::string DayOfFileName(const std::string& name);

} // namespace ruvo
