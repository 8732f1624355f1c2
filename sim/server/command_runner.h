// Runs the one command that goes on after its call has returned, on a thread of its own.
#pragma once

#include "link/seam/link_status.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace ruvo::sim {

struct SRunPlan {
    LinkStatus status = kLinkGood; ///< with which the command completes
    std::chrono::microseconds delay{0};
    bool hangs = false; ///< only an abort ends it
};

/// At most one command at a time. May be used from any thread except, for the destructor, from a callback.
class CCommandRunner {
public:
    /// `started` and `finished` run on the runner's thread, without its lock; `finished` receives the status.
    CCommandRunner(std::function<void()> started, std::function<void(LinkStatus)> finished);
    CCommandRunner(const CCommandRunner&) = delete;
    CCommandRunner& operator=(const CCommandRunner&) = delete;
    /// Drops a command that still runs without a notification.
    ~CCommandRunner();

    void Start(const SRunPlan& plan);
    /// Good when a command was running: it completes as aborted.
    LinkStatus Abort();

private:
    void Run();
    /// Waits for the end of the plan; false when the runner stops instead.
    bool WaitForEnd(std::unique_lock<std::mutex>& lock, const SRunPlan& plan);

    const std::function<void()> m_started;
    const std::function<void(LinkStatus)> m_finished;
    std::mutex m_lock;
    std::condition_variable m_wake;
    std::optional<SRunPlan> m_plan;
    bool m_aborting = false;
    bool m_stopping = false;
    std::thread m_thread; // last: it uses all of the above
};

} // namespace ruvo::sim
