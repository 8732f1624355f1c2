// How long the server's process lives: as long as a client needs it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <set>

namespace ruvo::sim {

class CSinkFanOut;

/// One per process. Safe for use by several threads.
class CServerLifetime {
public:
    using Clock = std::chrono::steady_clock;

    static CServerLifetime& Get();

    /// An object, or a client's lock on the class object.
    void AddReference();
    void ReleaseReference();
    /// Around each call of a client.
    void BeginCall();
    void EndCall();
    /// The sinks of an object that exists; they show whether its client still lives.
    void AddSinks(CSinkFanOut& sinks);
    void RemoveSinks(CSinkFanOut& sinks);

    struct SLimits {
        Clock::duration reconnect;
        Clock::duration idle;
    };
    /// Waits until no client has held the process for the time of `reconnect`, or until none has called it
    /// for that of `idle` and no client can be reached: one that was killed never releases its references.
    void WaitUntilUnneeded(const SLimits& limits);

private:
    bool IsUnneeded(std::unique_lock<std::mutex>& lock, const SLimits& limits);
    bool IsAnyClientAlive();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::mutex m_sinksMutex; ///< apart, since clients are called while it is held
    std::set<CSinkFanOut*> m_sinks;
    int m_references = 0;
    int m_calls = 0;
    bool m_wasReferenced = false;
    Clock::time_point m_lastUse = Clock::now();
};

} // namespace ruvo::sim
