#include "sim/windows/server_lifetime.h"

#include "sim/windows/sink_fan.h"

#include <algorithm>

namespace ruvo::sim {
namespace {

// A client that comes right after the last one has gone finds this process and not one on its way out.
constexpr std::chrono::seconds kLinger(1);
// From the start of the process to its first client.
constexpr std::chrono::seconds kFirstClient(30);
constexpr std::chrono::milliseconds kLook(250);

} // namespace

CServerLifetime& CServerLifetime::Get() {
    static CServerLifetime lifetime;
    return lifetime;
}

void CServerLifetime::AddHold() {
    const std::lock_guard lock(m_mutex);
    ++m_holds;
    m_wasHeld = true;
    m_lastUse = Clock::now();
}

void CServerLifetime::ReleaseHold() {
    const std::lock_guard lock(m_mutex);
    --m_holds;
    m_lastUse = Clock::now();
}

void CServerLifetime::CallBegins() {
    const std::lock_guard lock(m_mutex);
    ++m_calls;
}

void CServerLifetime::CallEnds() {
    const std::lock_guard lock(m_mutex);
    --m_calls;
    m_lastUse = Clock::now();
}

void CServerLifetime::AddFan(CSinkFan& fan) {
    const std::lock_guard lock(m_fanMutex);
    m_fans.insert(&fan);
}

void CServerLifetime::RemoveFan(CSinkFan& fan) {
    const std::lock_guard lock(m_fanMutex);
    m_fans.erase(&fan);
}

bool CServerLifetime::IsAnyClientAlive() {
    const std::lock_guard lock(m_fanMutex);
    return std::ranges::any_of(m_fans, [](CSinkFan* fan) { return fan->IsAnyAlive(); });
}

bool CServerLifetime::IsUnneeded(std::unique_lock<std::mutex>& lock, Clock::duration idleLimit) {
    const Clock::duration idle = Clock::now() - m_lastUse;
    if (m_holds == 0) {
        return idle >= (m_wasHeld ? kLinger : kFirstClient);
    }
    if (m_calls != 0 || idle < idleLimit) {
        return false;
    }
    lock.unlock();
    const bool alive = IsAnyClientAlive();
    lock.lock();
    if (alive) {
        m_lastUse = Clock::now();
    }
    return !alive;
}

void CServerLifetime::WaitUntilUnneeded(Clock::duration idleLimit) {
    std::unique_lock lock(m_mutex);
    while (!IsUnneeded(lock, idleLimit)) {
        m_changed.wait_for(lock, kLook);
    }
}

} // namespace ruvo::sim
