// The client's way to the comms server: the connection, and what one command at a time needs.
#pragma once

#include "link/channel/command_events.h"
#include "link/channel/command_mutex.h"
#include "link/channel/monitor_slot.h"
#include "link/channel/server_stay.h"
#include "link/seam/link_status.h"
#include "link/seam/server_connection.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace ruvo {

/// Owns the connection, the command lock, the two events and the device address. A command takes the lock,
/// calls the server and, when it only starts something, waits for its completion or an abort. A user of a
/// channel keeps its client alive meanwhile.
class CChannel {
    /// What a command that begins does with a pending abort: resets it and ends, leaves it and ends, or goes
    /// on.
    enum class EAbortRule : std::uint8_t { Reset, Leave, Ignore };

public:
    /// Proof that the caller holds the command lock.
    using CommandLock = std::lock_guard<CCommandMutex>;

    CChannel() = default;
    CChannel(const CChannel&) = delete;
    CChannel& operator=(const CChannel&) = delete;

    /// Starts the server and connects the sink, which must outlive the connection; false when either fails.
    bool Connect(IP32lsSink_v2& sink);
    /// Lets the server go; a running command is aborted first, and what is asked later gets status 255. False
    /// out of a report on a running command, which cannot end meanwhile: that one is aborted and no more.
    bool Disconnect();

    void SetDeviceAddress(std::uint8_t address) { m_deviceAddress = address; }
    /// The device address as requests send it.
    Variant Address() const;
    void SetDisconnectHandler(void (*handler)()) { m_disconnectHandler = handler; }

    // --- one command ---
    /// Asks the running command, or else the next one, to end with status 18. From any thread.
    void RequestAbort() { m_events.SignalAbort(); }
    /// Whether a command may begin: false when an abort is pending, which that uses up.
    bool Begin();
    CCommandMutex& Lock() { return m_lock; }
    CMonitorSlot& Monitor() { return m_monitor; }
    /// Makes ready for a command that answers at once; under the command lock. A completion that a command is
    /// waiting for stays: the request comes out of a report on it.
    void ResetCompletion();
    /// One server call under the command lock: its status, or 255 when it did not get through. `call` takes
    /// the server and the result variant.
    template <class Call>
    LinkStatus CallServer(Call call);
    /// Starts a command and waits for its end, under the command lock. A command that a report on this one
    /// starts is refused with 255, since their completions could not be told apart.
    template <class Start>
    LinkStatus StartAndWait(Start start);

    // --- a password entry, which is many commands ---
    /// What was in force before an entry: another entry, where a callback of the application enters a
    /// password itself.
    struct SBeforeEntry {
        CProgressMonitor* monitor;
        EAbortRule rule;
    };
    /// From here on an abort ends the entry as a whole: its requests see the abort and leave it there. Their
    /// reports go to `monitor`.
    SBeforeEntry BeginEntry(CProgressMonitor* monitor);
    /// Restores what BeginEntry returned. True when the entry was aborted, which uses the abort up unless it
    /// ends an entry around this one, too.
    bool EndEntry(const SBeforeEntry& before);
    bool IsEntering() const { return m_abortRule != EAbortRule::Reset; }
    bool IsEntryAborted();
    CProgressMonitor* EntryMonitor() const { return m_entryMonitor; }
    /// Whether the entry's requests go on after an abort: what it changed in the relay is put back then.
    void SetAbortIgnored(bool ignored);

    // --- for a thread that is to end the process ---
    /// Aborts the command that is being awaited; when it ends by itself first, no later one is aborted for
    /// it. False when none is awaited.
    bool CutShort() { return m_events.CutWaitShort(); }
    /// Whether a command was aborted by that.
    bool HasCutShort() const { return m_hasCutShort; }
    CServerStay& Stay() { return m_stay; }

    // --- what the sink reports, on any thread ---
    void ReportCompletion(LinkStatus status) { m_events.SignalCompletion(status); }
    void ReportLineStatus(LinkStatus status);

private:
    LinkStatus WaitForEnd();

    std::unique_ptr<IServerConnection> m_connection;
    std::uint32_t m_adviseCookie = 0;
    CMonitorSlot m_monitor;
    CCommandEvents m_events;
    CServerStay m_stay;
    std::atomic<bool> m_hasCutShort = false;
    CCommandMutex m_lock;
    bool m_isAwaiting = false; ///< a started command runs; under the command lock
    std::atomic<std::uint16_t> m_deviceAddress = 0xFFFF;
    std::atomic<void (*)()> m_disconnectHandler = nullptr;
    std::atomic<EAbortRule> m_abortRule = EAbortRule::Reset;
    CProgressMonitor* m_entryMonitor = nullptr;
};

/// The channel of the one client, kept alive with it for the time of a call; null while there is no client.
/// Defined where the one client is.
std::shared_ptr<CChannel> HoldChannel();

template <class Call>
LinkStatus CChannel::CallServer(Call call) {
    if (m_connection == nullptr) {
        return kLinkComFailure;
    }
    try {
        const CServerStay::CScope inside(m_stay);
        Variant result;
        std::int32_t status = 0;
        if (call(m_connection->Server(), result) != EComResult::Ok || !result.ToI4(status)) {
            return kLinkComFailure;
        }
        return static_cast<LinkStatus>(status);
    } catch (...) {
        return kLinkComFailure;
    }
}

template <class Start>
LinkStatus CChannel::StartAndWait(Start start) {
    if (m_isAwaiting) {
        return kLinkComFailure;
    }
    m_events.ResetCompletion(); // before the start: a quick command completes before the call returns
    m_isAwaiting = true;
    const LinkStatus started = CallServer(start);
    const LinkStatus ended = started == kLinkGood ? WaitForEnd() : started;
    m_isAwaiting = false;
    return ended;
}

} // namespace ruvo
