// The two events of the command discipline: "abort the running command" and "the command has completed".
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace ruvo {

/// Both events stay signalled until they are reset. The completion carries its status, so a status can never
/// be read without its event. Every operation may be called from any thread.
class CCommandEvents {
public:
    enum class EWake : std::uint8_t { Completed, Abort, CutShort };

    void SignalAbort();
    bool IsAbortSignalled() const { return m_abort; }
    /// Resets the abort event; true when it was signalled.
    bool ResetAbort();
    /// Wakes the thread that waits for either event, as an abort does, and no other: when the completion
    /// comes first nothing is left of it. False when none waits.
    bool CutWaitShort();

    void ResetCompletion();
    void SignalCompletion(std::uint32_t status);

    /// Waits without time-out for either event; when both are signalled the completion wins.
    EWake WaitForAny();
    /// Waits without time-out for the completion and returns its status.
    std::uint32_t WaitForCompletion();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    // Changed under the mutex alone, since a thread may be waiting for it. A request that finds nothing to
    // reset, as nearly every one does, needs no lock to see that.
    std::atomic<bool> m_abort = false;
    std::atomic<bool> m_completed = false;
    bool m_isAnyAwaited = false;
    bool m_isCutShort = false;  ///< of the wait that is under way
    std::uint32_t m_status = 0; ///< of the completion
};

} // namespace ruvo
