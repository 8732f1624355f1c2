// The signal that comes with writing to a pipe whose reader has gone.
#pragma once

#include <csignal>
#include <ctime>

namespace ruvo {

/// While it exists, a write of this thread to such a pipe fails with EPIPE and nothing else happens, whatever
/// the host program does with the signal.
class CPipeSignalBlock {
public:
    CPipeSignalBlock() {
        sigset_t pending;
        sigemptyset(&pending);
        sigpending(&pending);
        m_wasPending = sigismember(&pending, SIGPIPE) == 1;
        sigemptyset(&m_pipe);
        sigaddset(&m_pipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &m_pipe, &m_before);
    }
    CPipeSignalBlock(const CPipeSignalBlock&) = delete;
    CPipeSignalBlock& operator=(const CPipeSignalBlock&) = delete;
    ~CPipeSignalBlock() {
        const timespec atOnce = {};
        if (!m_wasPending) { // else it is the host's own
            sigtimedwait(&m_pipe, nullptr, &atOnce);
        }
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }

private:
    bool m_wasPending = false;
    sigset_t m_pipe = {};
    sigset_t m_before = {};
};

} // namespace ruvo
