// The system's scheduler that keeps tasks as XML files.
#pragma once

#include <optional>
#include <string>

namespace ruvo {

struct STaskScheduler {
    std::string program; ///< full path of the one that registers, shows and removes tasks
    std::string account; ///< whose process this is, as the tasks name accounts
};

/// None on a system that schedules in another way.
std::optional<STaskScheduler> FindTaskScheduler();

} // namespace ruvo
