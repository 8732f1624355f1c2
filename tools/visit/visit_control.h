// The programs that a visit starts, one after the other, and the requests to end that reach them through it.
#pragma once

#include "platform/child_program.h"
#include "platform/end_requests.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace ruvo {

/// A request to end does not end this process: it is passed on to the program that runs, and no further one
/// is to be started. To be made before the process has other threads.
class CVisitControl {
public:
    CVisitControl();
    CVisitControl(const CVisitControl&) = delete;
    CVisitControl& operator=(const CVisitControl&) = delete;
    ~CVisitControl();

    /// The system's word for the request that has come; null for none.
    [[nodiscard]] const char* Asked() const { return m_asked; }

    struct SProgramEnd {
        std::string failure;       ///< why it could not be started, in the system's words
        std::uint64_t process = 0; ///< the number it had
        SChildEnd end;
    };
    /// Starts the program and awaits it; `started` is told the process's number.
    SProgramEnd Run(const SChildProgram& program, CChildProgram::SWatch watch,
                    const std::function<void(std::uint64_t process)>& started = nullptr);

    /// False when a request to end came meanwhile.
    [[nodiscard]] bool Pause(std::chrono::milliseconds time);

private:
    void Listen();

    std::unique_ptr<IEndRequests> m_requests; ///< null when none can be heard
    std::atomic<const char*> m_asked = nullptr;
    std::mutex m_mutex; ///< of the program, and of the wait for a request
    std::condition_variable m_hasAsked;
    CChildProgram* m_program = nullptr;
    std::thread m_thread;
};

} // namespace ruvo
