#include "platform/task_scheduler.h"

#include "platform/windows/access_list.h"
#include "platform/windows/wide_text.h"

#include <array>

namespace ruvo {

std::optional<STaskScheduler> FindTaskScheduler() {
    std::array<wchar_t, MAX_PATH> folder{};
    const UINT size = GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    return STaskScheduler{Narrow({folder.data(), size < folder.size() ? size : 0}) + "\\schtasks.exe",
                          UserIdentifier()};
}

} // namespace ruvo
