#include "sim/sink_list.h"

#include <vector>

namespace ruvo::sim {

std::uint32_t CSinkList::Add(IP32lsSink_v2& sink) {
    const std::lock_guard lock(m_lock);
    m_sinks[++m_lastCookie] = &sink;
    return m_lastCookie;
}

void CSinkList::Remove(std::uint32_t cookie) {
    const std::lock_guard lock(m_lock);
    m_sinks.erase(cookie);
}

template <typename Tell>
void CSinkList::ForEach(Tell tell) {
    const std::lock_guard lock(m_lock);
    std::vector<std::uint32_t> cookies;
    for (const auto& [cookie, sink] : m_sinks) {
        cookies.push_back(cookie);
    }
    // By cookie, since a sink that was told may have removed itself or another.
    for (const std::uint32_t cookie : cookies) {
        if (const auto found = m_sinks.find(cookie); found != m_sinks.end()) {
            tell(*found->second);
        }
    }
}

void CSinkList::NotifyProgress(std::int32_t done, std::int32_t total) {
    ForEach([&](IP32lsSink_v2& sink) { sink.OnProgress(Variant::FromI4(done), Variant::FromI4(total)); });
}

void CSinkList::NotifyComplete(std::int32_t status, bool alternate) {
    const auto method = alternate ? &IP32lsSink_v2::OnCommandCompleteAlt : &IP32lsSink_v2::OnCommandComplete;
    ForEach([&](IP32lsSink_v2& sink) { (sink.*method)(Variant::FromI4(status)); });
}

} // namespace ruvo::sim
