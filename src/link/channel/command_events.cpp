#include "link/channel/command_events.h"

#include <utility>

namespace ruvo {

void CCommandEvents::SignalAbort() {
    const std::lock_guard guard(m_mutex);
    m_abort = true;
    m_changed.notify_all();
}

bool CCommandEvents::IsAbortSignalled() {
    const std::lock_guard guard(m_mutex);
    return m_abort;
}

bool CCommandEvents::ResetAbort() {
    const std::lock_guard guard(m_mutex);
    return std::exchange(m_abort, false);
}

void CCommandEvents::ResetCompletion() {
    const std::lock_guard guard(m_mutex);
    m_completed = false;
    m_status = 0;
}

void CCommandEvents::SignalCompletion(std::uint32_t status) {
    const std::lock_guard guard(m_mutex);
    m_status = status;
    m_completed = true;
    m_changed.notify_all();
}

CCommandEvents::EWake CCommandEvents::WaitForAny() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_completed || m_abort; });
    return m_completed ? EWake::Completed : EWake::Abort;
}

std::uint32_t CCommandEvents::WaitForCompletion() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_completed; });
    return m_status;
}

} // namespace ruvo
