#include "link/windows/server_watch.h"

#include "platform/trace.h"

#include <algorithm>
#include <chrono>

namespace ruvo {

namespace {

constexpr std::chrono::milliseconds kPeriod(1000);

/// The failures that mean that there is no server any more. Others may be its answer to our question.
constexpr HRESULT kServerDied[] = {
    HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE),
    HRESULT_FROM_WIN32(RPC_S_CALL_FAILED),
    HRESULT_FROM_WIN32(RPC_S_CALL_FAILED_DNE),
    RPC_E_DISCONNECTED,
    RPC_E_SERVER_DIED,
    RPC_E_SERVER_DIED_DNE,
    RPC_E_CONNECTION_TERMINATED,
    CO_E_OBJNOTCONNECTED,
};

/// Asks for something that changes nothing and is no command, but does go to the server.
bool HasDied(::IP32ls& server) {
    UINT count = 0;
    const HRESULT result = server.GetTypeInfoCount(&count);
    const bool died = std::ranges::find(kServerDied, result) != std::end(kServerDied);
    if (died) {
        TraceError("Comms server has died during a command: %08lX", static_cast<unsigned long>(result));
    }
    return died;
}

} // namespace

CServerWatch::CServerWatch(CComPointer<::IP32ls> server, std::function<void()> lost)
    : m_server(std::move(server)), m_lost(std::move(lost)), m_thread([this] { Run(); }) {}

CServerWatch::~CServerWatch() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void CServerWatch::CommandStarts() {
    {
        const std::lock_guard lock(m_mutex);
        m_running = true;
    }
    m_changed.notify_all();
}

void CServerWatch::CommandEnded() {
    const std::lock_guard lock(m_mutex);
    m_running = false; // the thread looks at it when its period is over
}

void CServerWatch::Run() {
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {
        return;
    }
    std::unique_lock lock(m_mutex);
    while (!m_stopping) {
        m_changed.wait(lock, [this] { return m_running || m_stopping; });
        if (m_changed.wait_for(lock, kPeriod, [this] { return m_stopping; })) {
            break;
        }
        lock.unlock();
        const bool died = HasDied(*m_server.Get());
        lock.lock();
        // Only if its completion has not come in the meantime.
        if (died && std::exchange(m_running, false)) {
            lock.unlock();
            m_lost();
            lock.lock();
        }
    }
    lock.unlock();
    CoUninitialize();
}

} // namespace ruvo
