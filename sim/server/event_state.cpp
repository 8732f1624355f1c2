#include "sim/server/event_state.h"

#include "platform/text_file.h"

#include <algorithm>
#include <string_view>

namespace ruvo::sim {

bool CEventState::Open(const std::string& path) {
    if (!path.empty() && GetPathKind(path) == EPathKind::File && !ReadTextFile(path, m_before)) {
        return false;
    }
    if (!m_file.Open(path)) {
        return false;
    }
    if (!m_before.empty() && m_before.back() != '\n') {
        m_file.Append(""); // closes the line that was cut short
    }
    return true;
}

std::size_t CEventState::HandedOver(const std::string& relay) const {
    std::size_t count = 0;
    std::string_view rest = m_before;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        count += rest.substr(0, end) == relay + ";" ? 1U : 0U;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return count;
}

} // namespace ruvo::sim
