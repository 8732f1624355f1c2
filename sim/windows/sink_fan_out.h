// The clients' sinks that share one connection to the simulated server.
#pragma once

#include "link/seam/ip32ls.h"
#include "link/windows/com_owners.h"

#include <cstdint>
#include <mutex>
#include <vector>

namespace ruvo::sim {

/// One sink to the simulated server, which serves any number of COM sinks. Safe for use by several threads;
/// the sinks are called without a lock, since a client may call the server from inside its sink.
class CSinkFanOut final : public ruvo::IP32lsSink_v2 {
public:
    using Sink = CComPointer<::IP32lsSink_v2>;

    /// The cookie is never 0.
    std::uint32_t Add(Sink sink);
    /// False when there is no such sink.
    bool Remove(std::uint32_t cookie);
    /// Asks the sinks; false when there is none whose process still runs.
    bool IsAnyAlive();

    void OnProgress(const Variant& done, const Variant& total) noexcept override;
    void OnCommandComplete(const Variant& status) noexcept override;
    void OnCommandCompleteAlt(const Variant& status) noexcept override;
    void OnLineStatus(const Variant& status) noexcept override;
    void OnTransferProgress(const Variant& value) noexcept override;

private:
    struct SAdvised {
        std::uint32_t cookie;
        Sink sink;
    };
    std::vector<SAdvised> Sinks();
    template <class Method, class... Values>
    void Notify(Method method, const Values&... values) noexcept;

    std::mutex m_mutex;
    std::vector<SAdvised> m_sinks;
    std::uint32_t m_lastCookie = 0;
};

} // namespace ruvo::sim
