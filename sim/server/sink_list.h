// The sinks that want to hear of a connection's commands.
#pragma once

#include "link/seam/ip32ls.h"
#include "link/seam/link_status.h"

#include <cstdint>
#include <map>
#include <mutex>

namespace ruvo::sim {

/// Safe for use by several threads. A sink may remove itself from the list while it is being notified.
class CSinkList {
public:
    /// The cookie is never 0.
    std::uint32_t Add(IP32lsSink_v2& sink);
    /// Waits for a notification in progress on another thread; none follows.
    void Remove(std::uint32_t cookie);

    void NotifyProgress(std::int32_t done, std::int32_t total);
    /// Notifies every sink, by one of the two methods that mean the same.
    void NotifyComplete(LinkStatus status, bool alternate);
    /// Calls the method of that slot with the values that it takes; further ones do not matter.
    void Report(std::uint8_t slot, const Variant& first, const Variant& second);

private:
    template <typename Notify>
    void ForEach(Notify notify);

    // Held while sinks are notified, which is what Remove waits for; recursive for a sink that removes
    // itself.
    std::recursive_mutex m_lock;
    std::map<std::uint32_t, IP32lsSink_v2*> m_sinks;
    std::uint32_t m_lastCookie = 0;
};

} // namespace ruvo::sim
