// The thread that receives the requests to end the program, and ensures that it ends.
#pragma once

#include "platform/end_requests.h"
#include "run/run_end.h"

#include <chrono>
#include <functional>
#include <thread>

namespace ruvo {

/// Asks the run to end, which it does by itself after the event under way. When nothing comes back from the
/// comms server meanwhile, a command that is being awaited is aborted, and then the process is ended from
/// here: the journal has what was taken. Nothing that the run's thread may hold is needed for that.
class CEndWatch {
public:
    struct STimes {
        std::chrono::milliseconds sameRequest; ///< what comes so soon is the same request once more
        std::chrono::milliseconds patience;    ///< as long nothing may come back
        std::chrono::milliseconds hurried;     ///< the same after a second request
    };
    static constexpr STimes kTimes{std::chrono::seconds(1), std::chrono::seconds(10),
                                   std::chrono::seconds(1)};

    /// Starts the thread; throws when there is none to be had. All that it is given must outlive it.
    CEndWatch(CRunEnd& end, IEndRequests& requests, const STimes& times = kTimes,
              std::function<void()> endProcess = &EndProcess);
    CEndWatch(const CEndWatch&) = delete;
    CEndWatch& operator=(const CEndWatch&) = delete;
    ~CEndWatch();

private:
    void Listen();
    void EndWhatIsStuck();

    CRunEnd& m_end;
    IEndRequests& m_requests;
    STimes m_times;
    std::function<void()> m_endProcess;
    std::thread m_thread;
};

} // namespace ruvo
