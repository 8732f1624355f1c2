#include "platform/end_requests.h"

#include "platform/posix/end_signals.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace ruvo {

namespace {

/// Those that ask this process to end: an ignored one does not.
sigset_t EndSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const SSignalRow& row : kEndSignals) {
        struct sigaction action = {};
        if (sigaction(row.number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            sigaddset(&set, row.number);
        }
    }
    return set;
}

/// What a program that this process executes must find again.
sigset_t g_maskAtStart;

/// Signals that are blocked wait in the system until they are read.
class CEndSignals final : public IEndRequests {
public:
    explicit CEndSignals(const sigset_t& set)
        : m_set(set), m_signals(signalfd(-1, &m_set, SFD_CLOEXEC | SFD_NONBLOCK)),
          m_stop(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    ~CEndSignals() override {
        for (const int file : {m_signals, m_stop}) {
            if (file != -1) {
                close(file);
            }
        }
    }

    bool IsGood() const { return m_signals != -1 && m_stop != -1; }

    EWake Wait(std::chrono::milliseconds most, const char*& name) override {
        const int timeout = most.count() > INT_MAX ? -1 : static_cast<int>(most.count());
        while (true) {
            std::array files{pollfd{m_stop, POLLIN, 0}, pollfd{m_signals, POLLIN, 0}};
            const int ready = poll(files.data(), files.size(), timeout);
            if (ready == 0) {
                return EWake::Timeout;
            }
            if (ready > 0 && files[0].revents != 0) {
                return EWake::Stopped;
            }
            if (ready > 0 && Read(name)) {
                return EWake::Request;
            }
            if (ready == -1 && errno != EINTR) {
                return EWake::Stopped;
            }
        }
    }

    bool Skip(std::chrono::milliseconds time) override {
        pollfd stop{m_stop, POLLIN, 0};
        if (poll(&stop, 1, static_cast<int>(time.count())) > 0) {
            return false;
        }
        for (const char* name = nullptr; Read(name);) {
        }
        return true;
    }

    void Stop() override { eventfd_write(m_stop, 1); }

    void Release() override { pthread_sigmask(SIG_UNBLOCK, &m_set, nullptr); }

private:
    bool Read(const char*& name) {
        signalfd_siginfo info{};
        if (read(m_signals, &info, sizeof info) != static_cast<ssize_t>(sizeof info)) {
            return false;
        }
        for (const SSignalRow& row : kEndSignals) {
            if (static_cast<std::uint32_t>(row.number) == info.ssi_signo) {
                name = row.name;
            }
        }
        return true;
    }

    sigset_t m_set;
    int m_signals;
    int m_stop;
};

} // namespace

std::unique_ptr<IEndRequests> HearEndRequests() {
    const sigset_t set = EndSignals();
    auto requests = std::make_unique<CEndSignals>(set);
    if (!requests->IsGood() || pthread_sigmask(SIG_BLOCK, &set, &g_maskAtStart) != 0) {
        return nullptr;
    }
    pthread_atfork(nullptr, nullptr, [] { pthread_sigmask(SIG_SETMASK, &g_maskAtStart, nullptr); });
    return requests;
}

void EndProcess() noexcept {
    _exit(0);
}

} // namespace ruvo
