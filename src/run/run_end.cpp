#include "run/run_end.h"

#include "log/error_log.h"
#include "log/log_reserve.h"
#include "log/run_texts.h"

namespace ruvo {

void CRunEnd::Ask(const char* name) {
    const char* none = nullptr;
    m_name.compare_exchange_strong(none, name);
    m_isAsked = true;
}

void CRunEnd::Begin(std::size_t relays) {
    m_relays = relays;
    m_visited = 0;
    m_stage = EStage::Visiting;
}

void CRunEnd::Finish() noexcept {
    if (m_stage == EStage::Visiting) {
        m_stage = EStage::Over;
        if (m_isAsked) {
            WriteEndLine();
        }
    }
}

void CRunEnd::WriteEndLine() noexcept {
    if (!m_isWritten.exchange(true)) {
        WithLogReserve([&] { LogMessage(RunEndedText(m_name.load(), NotVisited()), false); });
    }
}

void CRunEnd::Abandon() noexcept {
    WriteEndLine(); // first: what follows may take its time
    if (m_whenAbandoned) {
        m_whenAbandoned();
    }
    if (m_whenRunAbandoned) {
        m_whenRunAbandoned();
    }
}

} // namespace ruvo
