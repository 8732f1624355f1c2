#include "model/status/progress.h"

namespace ruvo {

void CProgressMonitor::SetPercent(int percent) {
    const std::int64_t range = std::int64_t{m_high} - m_low;
    const int value = static_cast<int>(m_low + range * percent / 100);
    if (m_parent == nullptr || m_last == value) {
        return;
    }
    m_last = value;
    m_parent->SetPercent(value);
}

void CProgressMonitor::SetProgress(std::uint32_t done, std::uint32_t total) {
    if (total == 0) {
        return;
    }
    SetPercent(done >= total ? 100 : static_cast<int>(std::uint64_t{done} * 100 / total));
}

void CNullProgressMonitor::SetPercent(int /*percent*/) {}

} // namespace ruvo
