// Notices that the server has died while a command runs on.
#pragma once

#include "link/windows/com_owners.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace ruvo {

/// A call that is in progress fails when the server's process goes; a command that has been started and whose
/// completion is awaited would not: nothing calls the server then, and nothing else would ever end the wait.
/// So the watch calls the server once in a while, as long as such a command runs.
class CServerWatch {
public:
    /// `lost` runs on the watch's thread, once for each command that was lost with its server.
    CServerWatch(CComPointer<::IP32ls> server, std::function<void()> lost);
    CServerWatch(const CServerWatch&) = delete;
    CServerWatch& operator=(const CServerWatch&) = delete;
    ~CServerWatch();

    void CommandStarts();
    void CommandEnded();

private:
    void Run();

    const CComPointer<::IP32ls> m_server;
    const std::function<void()> m_lost;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_running = false;
    bool m_stopping = false;
    std::thread m_thread; // last: it uses all of the above
};

} // namespace ruvo
