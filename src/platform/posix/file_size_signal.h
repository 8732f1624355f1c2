// The signal that comes with a file-size limit.
#pragma once

#include <csignal>

namespace ruvo {

/// A write past the file-size limit raises a signal that ends the process by default. Ignored, the write
/// fails with EFBIG instead, and the failure can be reported. A handler that the host program has set is left
/// alone.
inline void IgnoreFileSizeSignal() {
    static const bool done = [] {
        struct sigaction current = {};
        if (sigaction(SIGXFSZ, nullptr, &current) == 0 && current.sa_handler == SIG_DFL) {
            current.sa_handler = SIG_IGN;
            sigaction(SIGXFSZ, &current, nullptr);
        }
        return true;
    }();
    static_cast<void>(done);
}

} // namespace ruvo
