#include "platform/task_scheduler.h"

namespace ruvo {

// Units of systemd visit the sites.
std::optional<STaskScheduler> FindTaskScheduler() {
    return std::nullopt;
}

} // namespace ruvo
