// The lock that every command of the client holds while it calls the server.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>

namespace ruvo {

/// Recursive, since callbacks inside a command may use the client, and with a time-out. Built on a plain
/// mutex, which is taken once for each command: the timed lock of the standard library's own is invisible to
/// the thread sanitizer.
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
        if (!IsMine()) {
            if (CNoWaitScope::Depth() == 0) {
                m_mutex.lock();
            } else if (!m_mutex.try_lock()) {
                throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
            }
            m_owner = std::this_thread::get_id();
        }
        ++m_depth;
    }

    /// Asks again and again, since only the end of the client waits so.
    bool try_lock_for(std::chrono::milliseconds timeout) {
        constexpr std::chrono::milliseconds kPause{1};
        const auto end = std::chrono::steady_clock::now() + timeout;
        while (!IsMine() && !m_mutex.try_lock()) {
            if (std::chrono::steady_clock::now() >= end) {
                return false;
            }
            std::this_thread::sleep_for(kPause);
        }
        m_owner = std::this_thread::get_id();
        ++m_depth;
        return true;
    }

    void unlock() {
        if (--m_depth == 0) {
            m_owner = std::thread::id();
            m_mutex.unlock();
        }
    }

private:
    /// Any thread may ask, and none can take another's mark for its own.
    bool IsMine() const { return m_owner.load() == std::this_thread::get_id(); }

    std::mutex m_mutex; ///< held from the first lock() to the last unlock()
    std::atomic<std::thread::id> m_owner{};
    unsigned m_depth = 0; ///< of the owner
};

} // namespace ruvo
