#include "sim/server/command_runner.h"

#include <utility>

namespace ruvo::sim {

CCommandRunner::CCommandRunner(std::function<void()> started, std::function<void(LinkStatus)> finished)
    : m_started(std::move(started)), m_finished(std::move(finished)), m_thread([this] { Run(); }) {}

CCommandRunner::~CCommandRunner() {
    {
        const std::lock_guard lock(m_lock);
        m_stopping = true;
    }
    m_wake.notify_all();
    // A command that waits is woken and dropped; a notification in progress is let finish.
    m_thread.join();
}

void CCommandRunner::Start(const SRunPlan& plan) {
    {
        const std::lock_guard lock(m_lock);
        m_plan = plan;
        m_aborting = false;
    }
    m_wake.notify_all();
}

LinkStatus CCommandRunner::Abort() {
    {
        const std::lock_guard lock(m_lock);
        if (!m_plan) {
            return kLinkNothingToAbort;
        }
        if (m_aborting) {
            return kLinkAbortInProgress;
        }
        m_aborting = true;
    }
    m_wake.notify_all();
    return kLinkGood;
}

bool CCommandRunner::WaitForEnd(std::unique_lock<std::mutex>& lock, const SRunPlan& plan) {
    const auto ended = [this] { return m_aborting || m_stopping; };
    if (plan.hangs) {
        m_wake.wait(lock, ended);
    } else {
        m_wake.wait_for(lock, plan.delay, ended);
    }
    return !m_stopping;
}

void CCommandRunner::Run() {
    std::unique_lock lock(m_lock);
    while (true) {
        m_wake.wait(lock, [this] { return m_stopping || m_plan.has_value(); });
        if (m_stopping) {
            return;
        }
        const SRunPlan plan = *m_plan;
        // Both callbacks run without the lock: they may need the server's, under which the server calls Start
        // and Abort.
        lock.unlock();
        m_started();
        lock.lock();
        if (!WaitForEnd(lock, plan)) {
            return;
        }
        const LinkStatus status = m_aborting ? kLinkAborted : plan.status;
        // Before the notification, so that a sink may start the next command.
        m_plan.reset();
        lock.unlock();
        m_finished(status);
        lock.lock();
    }
}

} // namespace ruvo::sim
