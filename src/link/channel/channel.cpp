#include "link/channel/channel.h"

#include "link/recording/recorded_connection.h"

#include <chrono>
#include <utility>

namespace ruvo {

bool CChannel::Connect(IP32lsSink_v2& sink) {
    m_connection = RecordedAsPlanned(ConnectToServer());
    if (m_connection != nullptr && m_connection->Advise(sink, m_adviseCookie)) {
        return true;
    }
    m_connection.reset();
    return false;
}

bool CChannel::Disconnect() {
    constexpr std::chrono::milliseconds kTimeout(1000);
    std::unique_ptr<IServerConnection> connection;
    {
        std::unique_lock lock(m_lock, kTimeout);
        if (!lock.owns_lock()) {
            RequestAbort();
            try {
                lock.lock();
            } catch (const std::system_error&) { // the caller is inside a report on the running command
                return false;
            }
        }
        connection = std::move(m_connection); // from here on every call fails
    }
    // Without the lock: the server waits here for a sink call that is under way, and that may need the lock.
    try {
        if (connection != nullptr && m_adviseCookie != 0) {
            connection->Unadvise(m_adviseCookie);
        }
        connection.reset();
    } catch (...) { // a server that fails while it is released is released
    }
    return true;
}

Variant CChannel::Address() const {
    return Variant::FromUI1(static_cast<std::uint8_t>(m_deviceAddress & 0xFF));
}

bool CChannel::Begin() {
    return IsEntering() ? !IsEntryAborted() : !m_events.ResetAbort();
}

void CChannel::ResetCompletion() {
    if (!m_isAwaiting) {
        m_events.ResetCompletion();
    }
}

LinkStatus CChannel::WaitForEnd() {
    const CServerStay::CScope inside(m_stay);
    const CCommandEvents::EWake wake = m_events.WaitForAny();
    if (wake == CCommandEvents::EWake::Completed) {
        return m_events.WaitForCompletion();
    }
    m_hasCutShort = m_hasCutShort || wake == CCommandEvents::EWake::CutShort;
    const LinkStatus aborted =
        CallServer([](IP32ls& server, Variant& status) { return server.Abort(status); });
    // After the call: until then a second request to abort means this same command.
    m_events.ResetAbort();
    // Status 0 promises that the aborted command completes; without that promise there is nothing to wait
    // for.
    return aborted == kLinkGood ? m_events.WaitForCompletion() : aborted;
}

CChannel::SBeforeEntry CChannel::BeginEntry(CProgressMonitor* monitor) {
    return {std::exchange(m_entryMonitor, monitor), m_abortRule.exchange(EAbortRule::Leave)};
}

bool CChannel::EndEntry(const SBeforeEntry& before) {
    m_abortRule = before.rule; // first: what follows asks whether an entry around this one goes on
    m_monitor.Release(std::exchange(m_entryMonitor, before.monitor));
    return IsEntering() ? m_events.IsAbortSignalled() : m_events.ResetAbort();
}

bool CChannel::IsEntryAborted() {
    return m_abortRule == EAbortRule::Leave && m_events.IsAbortSignalled();
}

void CChannel::SetAbortIgnored(bool ignored) {
    m_abortRule = ignored ? EAbortRule::Ignore : EAbortRule::Leave;
}

void CChannel::ReportLineStatus(LinkStatus status) {
    void (*handler)() = m_disconnectHandler;
    if (status == kLinkLineDisconnected && handler != nullptr) {
        handler();
    }
}

} // namespace ruvo
