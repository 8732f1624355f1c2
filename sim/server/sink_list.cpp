#include "sim/server/sink_list.h"

#include <array>

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

template <typename Notify>
void CSinkList::ForEach(Notify notify) {
    const std::lock_guard lock(m_lock);
    // By cookie, since a notified sink may have removed itself or another, and without allocating, since a
    // client that is not notified of a command's end waits for ever.
    const std::uint32_t last = m_lastCookie;
    for (auto next = m_sinks.begin(); next != m_sinks.end() && next->first <= last;) {
        const std::uint32_t cookie = next->first;
        notify(*next->second);
        next = m_sinks.upper_bound(cookie);
    }
}

void CSinkList::NotifyProgress(std::int32_t done, std::int32_t total) {
    ForEach([&](IP32lsSink_v2& sink) { sink.OnProgress(Variant::FromI4(done), Variant::FromI4(total)); });
}

void CSinkList::NotifyComplete(LinkStatus status, bool alternate) {
    const auto method = alternate ? &IP32lsSink_v2::OnCommandCompleteAlt : &IP32lsSink_v2::OnCommandComplete;
    ForEach([&](IP32lsSink_v2& sink) { (sink.*method)(Variant::FromI4(static_cast<std::int32_t>(status))); });
}

void CSinkList::Report(std::uint8_t slot, const Variant& first, const Variant& second) {
    constexpr std::array kMethods{&IP32lsSink_v2::OnCommandComplete, &IP32lsSink_v2::OnCommandCompleteAlt,
                                  &IP32lsSink_v2::OnLineStatus, &IP32lsSink_v2::OnTransferProgress};
    constexpr std::uint8_t kProgressSlot = 7; // the others follow
    ForEach([&](IP32lsSink_v2& sink) {
        if (slot == kProgressSlot) {
            sink.OnProgress(first, second);
        } else {
            (sink.*kMethods.at(slot - kProgressSlot - 1U))(first);
        }
    });
}

} // namespace ruvo::sim
