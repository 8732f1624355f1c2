#include "link/channel/monitor_slot.h"

#include "model/status/progress.h"

namespace ruvo {

void CMonitorSlot::Store(CProgressMonitor* monitor) {
    if (monitor == nullptr && m_monitor == nullptr) {
        return;
    }
    const std::lock_guard guard(m_mutex);
    m_monitor = monitor;
}

void CMonitorSlot::Release(const CProgressMonitor* monitor) {
    if (monitor == nullptr) {
        return;
    }
    const std::lock_guard guard(m_mutex);
    if (m_monitor == monitor) {
        m_monitor = nullptr;
    }
}

template <class Report>
void CMonitorSlot::PassOn(Report report) {
    const std::lock_guard guard(m_mutex);
    CProgressMonitor* const monitor = m_monitor;
    if (monitor == nullptr) {
        return;
    }
    try {
        report(*monitor);
    } catch (...) { // NOLINT(bugprone-empty-catch): its own trouble, and no reason to report nothing more
    }
    if (m_monitor == nullptr) { // a request out of the report has taken it away
        m_monitor = monitor;
    }
}

void CMonitorSlot::ReportProgress(std::uint32_t done, std::uint32_t total) {
    if (total == 0) {
        return;
    }
    const int percent = done >= total ? 100 : static_cast<int>(static_cast<double>(done) * 100.0 / total);
    PassOn([&](CProgressMonitor& monitor) { monitor.SetPercent(percent); });
}

void CMonitorSlot::ReportTransfer(std::int32_t value) {
    PassOn([&](CProgressMonitor& monitor) {
        auto* transfer = dynamic_cast<CTransferProgressMonitor*>(&monitor);
        if (transfer != nullptr && transfer->IsReportingTransfer()) {
            transfer->ReportTransfer(value);
        }
    });
}

} // namespace ruvo
