#include "link/channel/command_events.h"

#include <utility>

namespace ruvo {

void CCommandEvents::SignalAbort() {
    const std::lock_guard guard(m_mutex);
    m_abort = true;
    m_changed.notify_all();
}

bool CCommandEvents::ResetAbort() {
    if (!m_abort) {
        return false;
    }
    const std::lock_guard guard(m_mutex);
    return m_abort.exchange(false);
}

bool CCommandEvents::CutWaitShort() {
    const std::lock_guard guard(m_mutex);
    m_isCutShort = m_isAnyAwaited;
    m_changed.notify_all();
    return m_isCutShort;
}

void CCommandEvents::ResetCompletion() {
    if (m_completed) {
        const std::lock_guard guard(m_mutex);
        m_completed = false;
    }
}

void CCommandEvents::SignalCompletion(std::uint32_t status) {
    const std::lock_guard guard(m_mutex);
    m_status = status;
    m_completed = true;
    m_changed.notify_all();
}

CCommandEvents::EWake CCommandEvents::WaitForAny() {
    std::unique_lock lock(m_mutex);
    m_isAnyAwaited = true;
    m_changed.wait(lock, [this] { return m_completed || m_abort || m_isCutShort; });
    m_isAnyAwaited = false;
    // Cleared in every case, so that no later wait is cut short. An abort that is also pending is the reason
    // given.
    const bool isCutShort = std::exchange(m_isCutShort, false) && !m_abort;
    if (m_completed) {
        return EWake::Completed;
    }
    return isCutShort ? EWake::CutShort : EWake::Abort;
}

std::uint32_t CCommandEvents::WaitForCompletion() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_completed.load(); });
    return m_status;
}

} // namespace ruvo
