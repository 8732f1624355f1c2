// The journal's flushes without a thread of their own, so that a run asks the same of the disk each time.
// What is flushed beside the run is as much as the disk says: by itself nothing, so that an end of the
// machine loses the most.
#include "ledger/background_flush.h"
#include "memory_disk.h"

namespace ruvo {

bool CBackgroundFlush::NoteWrite() noexcept {
    const std::size_t every = test::g_disk.flushEvery;
    return every != 0 && test::g_disk.operations % every == 0 ? Flush() : !m_hasFailed;
}

bool CBackgroundFlush::Flush() noexcept {
    m_failure = m_file.FlushWritten();
    m_hasFailed = !m_failure.Good() || m_hasFailed;
    return !m_hasFailed;
}

void CBackgroundFlush::Stop() noexcept {}

} // namespace ruvo
