// Whether a command is inside the comms server at this moment, as another thread sees it.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace ruvo {

/// Counts the calls and waits that are under way. Who ends the process asks here first: what is inside can be
/// kept from coming back, and touches nothing any more from then on.
class CServerStay {
public:
    /// One call or wait, which may hold others. Its thread does not get past its end once it is kept.
    class CScope {
    public:
        explicit CScope(CServerStay& stay) : m_stay(stay) { m_stay.Enter(); }
        CScope(const CScope&) = delete;
        CScope& operator=(const CScope&) = delete;
        ~CScope() { m_stay.Leave(); }

    private:
        CServerStay& m_stay;
    };

    /// Keeps every thread that is inside from coming back, for ever. False, and nothing is kept, when none
    /// is.
    bool Keep() {
        const std::lock_guard guard(m_mutex);
        m_isKept = m_isKept || m_depth > 0;
        return m_isKept;
    }

    /// Something has come back, if only a report.
    void NoteReturn() {
        const std::lock_guard guard(m_mutex);
        ++m_returns;
    }
    /// How often something has.
    std::uint64_t Returns() {
        const std::lock_guard guard(m_mutex);
        return m_returns;
    }

private:
    void Enter() {
        std::unique_lock lock(m_mutex);
        StayIfKept(lock);
        ++m_depth;
    }
    void Leave() {
        std::unique_lock lock(m_mutex);
        StayIfKept(lock);
        --m_depth;
        ++m_returns;
    }
    void StayIfKept(std::unique_lock<std::mutex>& lock) {
        while (m_isKept) {
            m_never.wait(lock);
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_never;
    unsigned m_depth = 0;
    std::uint64_t m_returns = 0;
    bool m_isKept = false;
};

} // namespace ruvo
