// Flushes a file beside the thread that writes it, so that an end of the machine costs at most what was
// written within the last second.
#pragma once

#include "platform/file.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace ruvo {

class CBackgroundFlush {
public:
    /// The file stays the caller's, and must stay open until this is stopped.
    explicit CBackgroundFlush(CFile& file) : m_file(file) {}
    CBackgroundFlush(const CBackgroundFlush&) = delete;
    CBackgroundFlush& operator=(const CBackgroundFlush&) = delete;
    ~CBackgroundFlush() { Stop(); }

    /// Something has been written. The first call starts the thread; where none can be started, only Flush
    /// brings bytes to the disk. False once any flush has failed: the system reports that once, and what was
    /// written before may be lost although a later flush succeeds.
    [[nodiscard]] bool NoteWrite() noexcept;
    /// Returns when all that was written is on the disk; false as above.
    [[nodiscard]] bool Flush() noexcept;
    /// Waits for the flush under way; after that the file may be closed.
    void Stop() noexcept;
    /// Of the flush, once one has failed.
    [[nodiscard]] SFileResult Failure() const { return m_failure; }

private:
    void Run() noexcept;

    CFile& m_file;
    std::mutex m_flushing; ///< held by the flush under way; taken before the other
    std::mutex m_mutex;    ///< held by the thread but while it waits or flushes
    std::condition_variable m_wake;
    std::thread m_thread;
    bool m_isTried = false;              ///< to start the thread
    bool m_isEnding = false;             ///< of the mutex
    std::atomic<bool> m_isDirty = false; ///< something is written and not flushed
    std::atomic<bool> m_isIdle = false;  ///< the thread waits, or is about to, until something is written
    std::atomic<bool> m_hasFailed = false;
    SFileResult m_failure; ///< written before that becomes true
};

} // namespace ruvo
