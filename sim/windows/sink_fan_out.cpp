#include "sim/windows/sink_fan_out.h"

#include "link/windows/variant_conversion.h"

#include <algorithm>

namespace ruvo::sim {
namespace {

/// The server's commands end on a thread that is not the COM runtime's.
class CApartment {
public:
    CApartment() : m_entered(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}
    CApartment(const CApartment&) = delete;
    CApartment& operator=(const CApartment&) = delete;
    ~CApartment() {
        if (m_entered) {
            CoUninitialize();
        }
    }

private:
    bool m_entered;
};

class CConverted {
public:
    explicit CConverted(const Variant& value) { ToVariant(value, m_native); }
    VARIANT Pass() const { return m_native.Get(); } // by value, yet it stays ours

private:
    COwnedVariant m_native;
};

} // namespace

std::uint32_t CSinkFanOut::Add(Sink sink) {
    const std::lock_guard lock(m_mutex);
    m_sinks.push_back({++m_lastCookie, std::move(sink)});
    return m_lastCookie;
}

bool CSinkFanOut::Remove(std::uint32_t cookie) {
    Sink removed; // released without the lock: that, too, is a call to the client
    const std::lock_guard lock(m_mutex);
    const auto found = std::ranges::find(m_sinks, cookie, &SAdvised::cookie);
    if (found == m_sinks.end()) {
        return false;
    }
    removed = std::move(found->sink);
    m_sinks.erase(found);
    return true;
}

std::vector<CSinkFanOut::SAdvised> CSinkFanOut::Sinks() {
    const std::lock_guard lock(m_mutex);
    return m_sinks;
}

bool CSinkFanOut::IsAnyAlive() {
    return std::ranges::any_of(Sinks(), [](const SAdvised& each) {
        UINT count = 0;
        return SUCCEEDED(each.sink->GetTypeInfoCount(&count));
    });
}

/// A sink that cannot be reached has lost its client: there is nothing left to notify.
template <class Method, class... Values>
void CSinkFanOut::Notify(Method method, const Values&... values) noexcept {
    try {
        const CApartment apartment;
        for (const SAdvised& each : Sinks()) {
            static_cast<void>((each.sink.Get()->*method)(CConverted(values).Pass()...));
        }
    } catch (...) { // out of memory: this one event is lost
    }
}

void CSinkFanOut::OnProgress(const Variant& done, const Variant& total) noexcept {
    Notify(&::IP32lsSink_v2::OnProgress, done, total);
}
void CSinkFanOut::OnCommandComplete(const Variant& status) noexcept {
    Notify(&::IP32lsSink_v2::OnCommandComplete, status);
}
void CSinkFanOut::OnCommandCompleteAlt(const Variant& status) noexcept {
    Notify(&::IP32lsSink_v2::OnCommandCompleteAlt, status);
}
void CSinkFanOut::OnLineStatus(const Variant& status) noexcept {
    Notify(&::IP32lsSink_v2::OnLineStatus, status);
}
void CSinkFanOut::OnTransferProgress(const Variant& value) noexcept {
    Notify(&::IP32lsSink_v2::OnTransferProgress, value);
}

} // namespace ruvo::sim
