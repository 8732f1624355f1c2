// The system's requests that this process end, for a thread that waits for them. For the process entry only:
// a library leaves it to its host what ends the process.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace ruvo {

/// A request may arrive more than once. A request that was ignored when the process started stays ignored.
class IEndRequests {
public:
    enum class [[nodiscard]] EWake : std::uint8_t{Request, Timeout, Stopped};
    static constexpr std::chrono::milliseconds kForever = std::chrono::milliseconds::max();

    IEndRequests() = default;
    IEndRequests(const IEndRequests&) = delete;
    IEndRequests& operator=(const IEndRequests&) = delete;
    virtual ~IEndRequests() = default;

    /// Waits for the next request, so long at most. A request sets `name` to the system's word for it, which
    /// stays. To be called by one thread alone.
    virtual EWake Wait(std::chrono::milliseconds most, const char*& name) = 0;
    /// Waits that long and forgets what is asked meanwhile. False when stopped. For the same thread.
    [[nodiscard]] virtual bool Skip(std::chrono::milliseconds time) = 0;
    /// Ends every wait. From any thread.
    virtual void Stop() = 0;
    /// Nothing will wait: from here on a request ends the process again.
    virtual void Release() = 0;
};

/// From here on a request to end does not end the process by itself. Programs that this process starts, in
/// whatever way, receive requests as usual. Null when requests cannot be heard: they end the process then.
std::unique_ptr<IEndRequests> HearEndRequests();

/// Runs the code, and returns when it has ended; it throws nothing. A request then interrupts none of its
/// calls, nor those of a server that it loads. For the process's first thread.
void RunUndisturbed(const std::function<void()>& code);

/// Ends the process at once, with status 0, without waiting for its threads.
[[noreturn]] void EndProcess() noexcept;

} // namespace ruvo
