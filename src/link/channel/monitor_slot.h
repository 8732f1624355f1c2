// The progress monitor of the command that runs.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

namespace ruvo {

class CProgressMonitor;

/// Holds the monitor that the caller of an operation lends, and passes on to it what the server reports on
/// its own threads. A report is over before the operation returns, unless it comes out of that operation
/// itself: so the monitor cannot go meanwhile.
class CMonitorSlot {
public:
    /// Lends the caller's monitor for the time of one operation.
    class CMonitorScope {
    public:
        CMonitorScope(CMonitorSlot& slot, CProgressMonitor* monitor) : m_slot(slot), m_monitor(monitor) {
            m_slot.Store(monitor);
        }
        CMonitorScope(const CMonitorScope&) = delete;
        CMonitorScope& operator=(const CMonitorScope&) = delete;
        ~CMonitorScope() { m_slot.Release(m_monitor); }

    private:
        CMonitorSlot& m_slot;
        CProgressMonitor* m_monitor;
    };

    /// The monitor to report to from now on; null for none.
    void Store(CProgressMonitor* monitor);
    /// Takes this monitor out. Another one stays: another thread's command may be waiting for its turn.
    void Release(const CProgressMonitor* monitor);

    /// `done` parts out of `total`; nothing when the total is 0.
    void ReportProgress(std::uint32_t done, std::uint32_t total);
    /// To a monitor that reports transfers and has asked for them.
    void ReportTransfer(std::int32_t value);

private:
    template <class Report>
    void PassOn(Report report);

    std::recursive_mutex m_mutex; ///< recursive, since a report may make a request itself
    /// Changed under the mutex alone. Where no monitor is lent, as in all of a run, there is nothing to
    /// change and no report to wait for, which is seen without it.
    std::atomic<CProgressMonitor*> m_monitor = nullptr;
};

} // namespace ruvo
