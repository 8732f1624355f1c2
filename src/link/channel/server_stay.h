// Whether a command is inside the comms server at this moment, as another thread sees it.
#pragma once

#include <atomic>
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
        std::uint32_t inside = m_inside;
        while (inside != 0 && !m_inside.compare_exchange_weak(inside, inside | kKept)) {
        }
        return inside != 0;
    }

    /// Something has come back, if only a report.
    void NoteReturn() { ++m_returns; }
    /// How often something has.
    std::uint64_t Returns() const { return m_returns; }

private:
    static constexpr std::uint32_t kKept = 0x80000000U;

    void Enter() {
        if ((m_inside.fetch_add(1) & kKept) != 0) {
            StayForEver();
        }
    }
    void Leave() {
        if ((m_inside.fetch_sub(1) & kKept) != 0) {
            StayForEver();
        }
        ++m_returns;
    }
    void StayForEver() {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_never.wait(lock);
        }
    }

    /// How many are inside, and kKept with it: in one number, so that a thread has either left before the
    /// others are kept or is one of them. Every call of the server is counted, so no lock is taken for it.
    std::atomic<std::uint32_t> m_inside = 0;
    std::atomic<std::uint64_t> m_returns = 0;
    std::mutex m_mutex; ///< of those that stay
    std::condition_variable m_never;
};

} // namespace ruvo
