// The journal's flushes without a thread of their own, so that a run asks the same of the disk each time.
// What a flush beside the run brings to the disk early is left out: an end of the machine then loses the
// most.
#include "ledger/background_flush.h"

namespace ruvo {

bool CBackgroundFlush::NoteWrite() noexcept {
    return !m_hasFailed;
}

bool CBackgroundFlush::Flush() noexcept {
    m_hasFailed = !m_file.FlushToDisk().Good() || m_hasFailed;
    return !m_hasFailed;
}

void CBackgroundFlush::Stop() noexcept {}

} // namespace ruvo
