#include "platform/process_protection.h"

#include <sys/prctl.h>
#include <sys/resource.h>

namespace ruvo {

void ProtectProcessMemory() noexcept {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
}

} // namespace ruvo
