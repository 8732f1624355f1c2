// The task that visits a site every day, as the task scheduler of Windows takes it from an XML file.
#pragma once

#include "platform/clock.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

struct SDailyTime {
    int hour = 0;
    int minute = 0;
    bool isUtc = false; ///< else of this machine's local time
};
/// "02:00" or "02:00Z"; none for anything else.
[[nodiscard]] std::optional<SDailyTime> ParseDailyTime(std::string_view text);

struct STask {
    std::string program; ///< this one; full paths as the system writes them
    std::string iniPath;
    std::vector<std::string> options; ///< of the visit
    std::vector<SDailyTime> times;
    std::string account; ///< a name, or a security identifier
};

/// Below the scheduler's folder "ruvo": the site's name, for a file outside the folder for sites with a
/// digest of its path.
[[nodiscard]] std::string TaskName(const std::string& iniPath, const std::string& sitesFolder);

/// Why the scheduler would not hand this path to the program as it is; empty when it does.
[[nodiscard]] std::string WhyNotScheduled(std::string_view iniPath);

/// The security identifier of the system's own accounts, by their English names; any other name unchanged.
[[nodiscard]] std::string AccountOf(const std::string& name);

/// The time, in both zones.
struct SBothTimes {
    SCalendarTime local;
    SCalendarTime utc;
};
/// In UTF-8, its declaration that of UTF-16. Each time begins with its next occurrence, so that none counts
/// as missed already.
[[nodiscard]] std::string TaskXml(const STask& task, const SBothTimes& now);

} // namespace ruvo
