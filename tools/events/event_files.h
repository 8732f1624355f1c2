// Which day files the arguments name.
#pragma once

#include <string>
#include <vector>

namespace ruvo {

struct SFoundFile {
    std::string path;  ///< in the system's own form, as typed or below the folder as typed
    std::string relay; ///< what the file's name tells, UTF-8
};

struct SFoundFiles {
    std::vector<SFoundFile> files;
    std::vector<std::string> failures; ///< what could not be read, and why: "PATH: no such file or folder"
};

/// A file named as such whatever its ending; of a folder all day files in it and below, sorted by path. Links
/// inside a folder are not followed.
[[nodiscard]] SFoundFiles FindDayFiles(const std::vector<std::string>& paths);

/// The day file's name up to its date; without a date, up to its ending.
[[nodiscard]] std::string RelayOfFileName(const std::string& name);
/// The date in the day file's name, as "2026-11-16"; empty for a name without one.
[[nodiscard]] std::string DayOfFileName(const std::string& name);

} // namespace ruvo
