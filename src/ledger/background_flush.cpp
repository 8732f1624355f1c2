#include "ledger/background_flush.h"

#include <chrono>
#include <exception>

namespace ruvo {

namespace {

/// From the first unflushed byte to the flush. A visit that ends sooner flushes by itself, and costs no
/// further flush; with the flush's own time it stays below a second.
constexpr std::chrono::milliseconds kDelay{500};

} // namespace

/// Called for each frame, so it asks for the mutex only when the thread has to be woken. The thread says that
/// it is idle and then looks whether something is written; here it is the other way round, so that one of the
/// two sees the other.
bool CBackgroundFlush::NoteWrite() noexcept {
    if (!m_isTried) {
        m_isTried = true;
        try {
            m_thread = std::thread([this] { Run(); });
        } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): the run flushes at its own steps
        }
    }
    m_isDirty = true;
    if (m_isIdle) {
        const std::scoped_lock lock(m_mutex); // it has begun to wait then
        m_wake.notify_one();
    }
    return !m_hasFailed;
}

/// The run goes on writing beside a flush, but not flushing: a failure is reported to one flush only, and the
/// other would count as good before the failure is known here.
bool CBackgroundFlush::Flush() noexcept {
    const std::scoped_lock oneAtATime(m_flushing);
    m_isDirty = false; // before: what is written meanwhile may have come too late
    const SFileResult flushed = m_file.FlushWritten();
    if (!flushed.Good() && !m_hasFailed) {
        m_failure = flushed;
        m_hasFailed = true;
    }
    return !m_hasFailed;
}

void CBackgroundFlush::Stop() noexcept {
    {
        const std::scoped_lock lock(m_mutex);
        m_isEnding = true;
        m_wake.notify_one();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void CBackgroundFlush::Run() noexcept {
    std::unique_lock lock(m_mutex);
    while (!m_isEnding) {
        m_isIdle = true;
        m_wake.wait(lock, [this] { return m_isDirty || m_isEnding; });
        m_isIdle = false;
        m_wake.wait_for(lock, kDelay, [this] { return m_isEnding; });
        if (m_isDirty && !m_isEnding) {
            lock.unlock();
            static_cast<void>(Flush());
            lock.lock();
        }
    }
}

} // namespace ruvo
