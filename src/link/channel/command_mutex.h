// The lock that every command of the client holds while it calls the server.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

namespace ruvo {

/// Recursive, since callbacks inside a command may use the client, and with a time-out. Built on a plain
/// mutex: the timed lock of the standard library's own is invisible to the thread sanitizer.
class CCommandMutex {
public:
    /// While one lives, its thread does not wait for a lock that another thread holds: taking it is an error.
    /// For the threads that report a running command's progress: it could not end while they wait.
    class CNoWaitScope {
    public:
        CNoWaitScope() { ++Depth(); }
        CNoWaitScope(const CNoWaitScope&) = delete;
        CNoWaitScope& operator=(const CNoWaitScope&) = delete;
        ~CNoWaitScope() { --Depth(); }

        static unsigned& Depth() {
            thread_local unsigned depth = 0;
            return depth;
        }
    };

    void lock() {
        std::unique_lock guard(m_mutex);
        if (!IsAvailable() && CNoWaitScope::Depth() > 0) {
            throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
        }
        m_freed.wait(guard, [this] { return IsAvailable(); });
        Acquire();
    }

    bool try_lock_for(std::chrono::milliseconds timeout) {
        std::unique_lock guard(m_mutex);
        if (!m_freed.wait_for(guard, timeout, [this] { return IsAvailable(); })) {
            return false;
        }
        Acquire();
        return true;
    }

    void unlock() {
        const std::lock_guard guard(m_mutex);
        if (--m_depth == 0) {
            m_owner = {};
            m_freed.notify_one();
        }
    }

private:
    /// Free, or held by this very thread.
    bool IsAvailable() const { return m_depth == 0 || m_owner == std::this_thread::get_id(); }
    void Acquire() {
        m_owner = std::this_thread::get_id();
        ++m_depth;
    }

    std::mutex m_mutex;
    std::condition_variable m_freed;
    std::thread::id m_owner;
    unsigned m_depth = 0;
};

} // namespace ruvo
