#include "platform/end_requests.h"

#include "platform/posix/end_signals.h"
#include "platform/posix/file_failures.h"
#include "platform/posix/place.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <thread>
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

/// Where the handler writes the numbers of signals. Never closed: a signal can come at any time.
std::atomic<int> g_heard = -1;
sigset_t g_heardSignals;

void Hear(int number) {
    const int before = errno;
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = write(g_heard, &byte, 1); // a full pipe holds requests enough
    errno = before;
}

void LeaveToTheSystem(const sigset_t& set) {
    for (const SSignalRow& row : kEndSignals) {
        if (sigismember(&set, row.number) == 1) {
            signal(row.number, SIG_DFL);
        }
    }
}

/// Signals are handled, not blocked: a program that this process starts would find them blocked, too, and
/// could not be ended by them. A handler is gone in it.
class CEndSignals final : public IEndRequests {
public:
    explicit CEndSignals(const sigset_t& set) : m_set(set), m_stop(eventfd(0, EFD_CLOEXEC)) {
        std::array<int, 2> ends{-1, -1};
        if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0) {
            m_signals = CDescriptor(ends[0]);
            g_heard = ends[1];
        }
    }

    bool Listen() {
        struct sigaction action = {};
        action.sa_handler = &Hear;
        action.sa_flags = SA_RESTART;
        bool isGood = m_signals.IsOpen() && m_stop.IsOpen();
        for (const SSignalRow& row : kEndSignals) {
            isGood = isGood &&
                     (sigismember(&m_set, row.number) != 1 || sigaction(row.number, &action, nullptr) == 0);
        }
        return isGood;
    }

    EWake Wait(std::chrono::milliseconds most, const char*& name) override {
        const int timeout = most.count() > INT_MAX ? -1 : static_cast<int>(most.count());
        while (true) {
            std::array files{pollfd{m_stop.Get(), POLLIN, 0}, pollfd{m_signals.Get(), POLLIN, 0}};
            const int ready = Retry([&] { return poll(files.data(), files.size(), timeout); });
            if (ready == 0) {
                return EWake::Timeout;
            }
            if (ready == -1 || files[0].revents != 0) {
                return EWake::Stopped;
            }
            if (Read(name)) {
                return EWake::Request;
            }
        }
    }

    bool Skip(std::chrono::milliseconds time) override {
        pollfd stop{m_stop.Get(), POLLIN, 0};
        if (poll(&stop, 1, static_cast<int>(time.count())) > 0) {
            return false;
        }
        for (const char* name = nullptr; Read(name);) {
        }
        return true;
    }

    void Stop() override { eventfd_write(m_stop.Get(), 1); }

    void Release() override { LeaveToTheSystem(m_set); }

private:
    bool Read(const char*& name) {
        unsigned char number = 0;
        if (read(m_signals.Get(), &number, 1) != 1) {
            return false;
        }
        for (const SSignalRow& row : kEndSignals) {
            if (row.number == number) {
                name = row.name;
            }
        }
        return true;
    }

    sigset_t m_set;
    CDescriptor m_signals;
    CDescriptor m_stop;
};

} // namespace

std::unique_ptr<IEndRequests> HearEndRequests() {
    const sigset_t set = EndSignals();
    auto requests = std::make_unique<CEndSignals>(set);
    if (!requests->Listen()) {
        LeaveToTheSystem(set);
        return nullptr;
    }
    g_heardSignals = set;
    // What is heard in a child that executes no program is not meant for this process.
    pthread_atfork(nullptr, nullptr, [] { LeaveToTheSystem(g_heardSignals); });
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr); // whoever has started this process may have blocked them
    return requests;
}

// The system hands a signal to the first thread if that one does not block it. There it interrupts nothing.
void RunUndisturbed(const std::function<void()>& code) {
    const sigset_t set = EndSignals();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    std::thread thread;
    try {
        thread = std::thread(code);
    } catch (const std::exception&) { // no thread is to be had
        code();
        return;
    }
    thread.join();
}

void EndProcess() noexcept {
    _exit(0);
}

} // namespace ruvo
