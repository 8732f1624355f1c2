#include "sim/windows/server_lifetime.h"

#include "sim/windows/sink_fan_out.h"

#include <algorithm>

namespace ruvo::sim {
namespace {

// From the start of the process to its first client.
constexpr std::chrono::seconds kFirstClientTimeout(30);
constexpr std::chrono::milliseconds kPollInterval(250);

} // namespace

CServerLifetime& CServerLifetime::Get() {
    static CServerLifetime lifetime;
    return lifetime;
}

void CServerLifetime::AddReference() {
    const std::lock_guard lock(m_mutex);
    ++m_references;
    m_wasReferenced = true;
    m_lastUse = Clock::now();
}

void CServerLifetime::ReleaseReference() {
    const std::lock_guard lock(m_mutex);
    --m_references;
    m_lastUse = Clock::now();
}

void CServerLifetime::BeginCall() {
    const std::lock_guard lock(m_mutex);
    ++m_calls;
}

void CServerLifetime::EndCall() {
    const std::lock_guard lock(m_mutex);
    --m_calls;
    m_lastUse = Clock::now();
}

void CServerLifetime::AddSinks(CSinkFanOut& sinks) {
    const std::lock_guard lock(m_sinksMutex);
    m_sinks.insert(&sinks);
}

void CServerLifetime::RemoveSinks(CSinkFanOut& sinks) {
    const std::lock_guard lock(m_sinksMutex);
    m_sinks.erase(&sinks);
}

bool CServerLifetime::IsAnyClientAlive() {
    const std::lock_guard lock(m_sinksMutex);
    return std::ranges::any_of(m_sinks, [](CSinkFanOut* sinks) { return sinks->IsAnyAlive(); });
}

bool CServerLifetime::IsUnneeded(std::unique_lock<std::mutex>& lock, const SLimits& limits) {
    const Clock::duration idle = Clock::now() - m_lastUse;
    if (m_references == 0) {
        return idle >= (m_wasReferenced ? limits.reconnect : kFirstClientTimeout);
    }
    if (m_calls != 0 || idle < limits.idle) {
        return false;
    }
    // Without the lock: asking a client waits for its process, and its calls take the lock meanwhile.
    lock.unlock();
    const bool alive = IsAnyClientAlive();
    lock.lock();
    if (alive) {
        m_lastUse = Clock::now();
    }
    return !alive;
}

void CServerLifetime::WaitUntilUnneeded(const SLimits& limits) {
    std::unique_lock lock(m_mutex);
    while (!IsUnneeded(lock, limits)) {
        m_changed.wait_for(lock, kPollInterval);
    }
}

} // namespace ruvo::sim
