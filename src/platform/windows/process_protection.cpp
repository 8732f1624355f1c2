#include "platform/process_protection.h"

#include "platform/windows/system.h"

namespace ruvo {

// A crash goes unreported, and so leaves no dump, and shows no box that an unattended program would wait
// behind. Other programs of the same user can still open the process: that the system leaves to the user.
void ProtectProcessMemory() noexcept {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
}

} // namespace ruvo
