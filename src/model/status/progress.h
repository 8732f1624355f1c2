// Progress of long requests, reported in percent.
#pragma once

#include <cstdint>
#include <optional>

namespace ruvo {

/// Reports progress into a parent, over the part of the parent's range that this monitor has. The parent is
/// borrowed and must outlive it; without one nothing is reported.
class CProgressMonitor {
public:
    CProgressMonitor(CProgressMonitor* parent, int low, int high)
        : m_low(low), m_high(high), m_parent(parent) {}
    virtual ~CProgressMonitor() = default;

    /// Passes low + (high - low) x percent / 100 on, unless it is what was passed last.
    virtual void SetPercent(int percent);

    /// Reports done of total as a percentage, 100 at most; nothing while the total is 0.
    void SetProgress(std::uint32_t done, std::uint32_t total);

    bool IsTiming() const { return m_timing; }
    void SetTiming(bool timing) { m_timing = timing; }

protected:
    CProgressMonitor(const CProgressMonitor&) = default;
    CProgressMonitor& operator=(const CProgressMonitor&) = default;

private:
    std::optional<int> m_last; ///< none before the first report, so that even 0 is passed on
    int m_low;
    int m_high;
    bool m_timing = false;
    CProgressMonitor* m_parent;
};

/// Ignores all reports.
class CNullProgressMonitor final : public CProgressMonitor {
public:
    CNullProgressMonitor() : CProgressMonitor(nullptr, 0, 100) {}

    void SetPercent(int percent) override;
};

/// Hears also of the amount transferred, while its flag is set.
class CTransferProgressMonitor : public CProgressMonitor {
public:
    using CProgressMonitor::CProgressMonitor;

    /// To be called only while IsReportingTransfer().
    virtual void ReportTransfer(std::int32_t value) { m_transferred = value; }

    bool IsReportingTransfer() const { return m_reportsTransfer; }
    void SetReportingTransfer(bool reports) { m_reportsTransfer = reports; }
    /// The value reported last; 0 before the first report.
    std::int32_t GetTransferred() const { return m_transferred; }

private:
    bool m_reportsTransfer = false;
    std::int32_t m_transferred = 0;
};

} // namespace ruvo
