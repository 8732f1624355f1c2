// The lock that every command of the client holds while it calls the server.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace ruvo {

/// Recursive, since callbacks inside a command may use the client, and with a time-out. Built on a plain
/// mutex: the timed lock of the standard library's own is invisible to the thread sanitizer.
class CCommandMutex {
public:
    void lock() {
        std::unique_lock guard(m_mutex);
        m_freed.wait(guard, [this] { return IsOurs(); });
        Take();
    }

    bool try_lock_for(std::chrono::milliseconds patience) {
        std::unique_lock guard(m_mutex);
        if (!m_freed.wait_for(guard, patience, [this] { return IsOurs(); })) {
            return false;
        }
        Take();
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
    bool IsOurs() const { return m_depth == 0 || m_owner == std::this_thread::get_id(); }
    void Take() {
        m_owner = std::this_thread::get_id();
        ++m_depth;
    }

    std::mutex m_mutex;
    std::condition_variable m_freed;
    std::thread::id m_owner;
    unsigned m_depth = 0;
};

} // namespace ruvo
