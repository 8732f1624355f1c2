#include "link/client.h"

#include "link/channel/request_pattern.h"
#include "link/channel/sink.h"
#include "model/status/progress.h"

#include <chrono>

namespace ruvo {

namespace {

/// The one client, and what guards it: the sink looks it up on the server's threads. The sink has no state
/// and outlives every client.
struct SSingleton {
    CP32lsSink_v2 sink;
    std::mutex mutex;
    std::shared_ptr<CP32Wrap> wrap;
};

SSingleton& Singleton() {
    static SSingleton singleton;
    return singleton;
}

void StoreSingleton(std::shared_ptr<CP32Wrap> wrap) {
    const std::lock_guard guard(Singleton().mutex);
    Singleton().wrap.swap(wrap);
} // the old client, if any, ends here: after the guard's scope it may take its time

} // namespace

CP32Wrap::CP32Wrap(CKey /*key*/) {}
CP32Wrap::~CP32Wrap() = default;

std::shared_ptr<CP32Wrap> CP32Wrap::HoldInstance() {
    const std::lock_guard guard(Singleton().mutex);
    return Singleton().wrap;
}

CP32Wrap* CP32Wrap::GetInstance() {
    return HoldInstance().get();
}

LinkStatus CP32Wrap::CreateInstance() {
    if (GetInstance() != nullptr) {
        return kLinkGood;
    }
    try {
        const auto wrap = std::make_shared<CP32Wrap>(CKey());
        StoreSingleton(wrap); // before the server is told of the sink, which looks the client up
        wrap->m_connection = ConnectToServer();
        if (wrap->m_connection != nullptr &&
            wrap->m_connection->Advise(Singleton().sink, wrap->m_adviseCookie)) {
            return kLinkGood;
        }
        wrap->m_connection.reset();
    } catch (...) { // a server that fails in an unforeseen way has failed to start
    }
    StoreSingleton(nullptr);
    return kLinkComFailure;
}

void CP32Wrap::DestroyInstance() {
    constexpr std::chrono::milliseconds kPatience(1000);
    const std::shared_ptr<CP32Wrap> wrap = HoldInstance();
    if (wrap == nullptr) {
        return;
    }
    std::unique_ptr<IServerConnection> connection;
    {
        std::unique_lock lock(wrap->m_commandLock, kPatience);
        if (!lock.owns_lock()) {
            wrap->m_events.SignalAbort();
            try {
                lock.lock();
            } catch (const std::system_error&) { // out of a report on the command, which cannot end meanwhile
                return;
            }
        }
        connection = std::move(wrap->m_connection);
    }
    // Without the lock: the server waits here for a sink call that is under way, and that may want the lock.
    try {
        if (connection != nullptr && wrap->m_adviseCookie != 0) {
            connection->Unadvise(wrap->m_adviseCookie);
        }
        connection.reset();
    } catch (...) { // a server that fails while it is let go has been let go
    }
    StoreSingleton(nullptr);
}

CP32Wrap::SCallbacks& CP32Wrap::Callbacks() {
    static SCallbacks callbacks;
    return callbacks;
}

void CP32Wrap::SetGetPasswordCallback(GetPasswordFunction callback) {
    Callbacks().getPassword = callback;
}

void CP32Wrap::SetPasswordAcceptedCallback(PasswordAcceptedFunction callback) {
    Callbacks().passwordAccepted = callback;
}

void CP32Wrap::SetUsernamePasswordCallback(UsernamePasswordFunction callback) {
    Callbacks().usernamePassword = callback;
}

void CP32Wrap::SetSecondEditionLoginCallback(SecondEditionLoginFunction callback) {
    Callbacks().secondEditionLogin = callback;
}

void CP32Wrap::SetLoginAcceptedCallback(LoginAcceptedFunction callback) {
    Callbacks().loginAccepted = callback;
}

void CP32Wrap::SetLoginCancelledCallback(LoginCancelledFunction callback) {
    Callbacks().loginCancelled = callback;
}

void CP32Wrap::SetSecurityEventCallback(SecurityEventFunction callback) {
    Callbacks().securityEvent = callback;
}

void CP32Wrap::SetDisconnectHandler(void (*handler)()) {
    m_disconnectHandler = handler;
}

void CP32Wrap::SetDeviceAddress(std::uint8_t address) {
    m_deviceAddress = address;
}

void CP32Wrap::RequestAbort() {
    m_events.SignalAbort();
}

Variant CP32Wrap::Address() const {
    return Variant::FromUI1(static_cast<std::uint8_t>(m_deviceAddress & 0xFF));
}

/// An abort during a password entry ends the entry as a whole: its requests see the abort and leave it there.
bool CP32Wrap::Begin() {
    if (m_enteringPassword) {
        return !IsEntryAborted();
    }
    return !m_events.TakeAbort();
}

/// A completion that a command is waiting for stays: the request comes out of a report on it.
void CP32Wrap::ResetCompletion() {
    if (!m_isAwaiting) {
        m_events.ResetCompletion();
    }
}

bool CP32Wrap::IsEntryAborted() {
    return m_enteringPassword && !m_restoringGuard && m_events.IsAbortSignalled();
}

void CP32Wrap::StoreMonitor(CProgressMonitor* monitor) {
    const std::lock_guard guard(m_monitorMutex);
    m_monitor = monitor;
}

/// Only what is still one's own: another thread's command may be waiting for its turn already.
void CP32Wrap::ReleaseMonitor(const CProgressMonitor* monitor) {
    const std::lock_guard guard(m_monitorMutex);
    if (m_monitor == monitor) {
        m_monitor = nullptr;
    }
}

LinkStatus CP32Wrap::WaitForCommand() {
    if (m_events.WaitForAny() == CCommandEvents::EWake::Completed) {
        return m_events.WaitForCompletion();
    }
    const LinkStatus aborted =
        CallServer([](IP32ls& server, Variant& status) { return server.Abort(status); });
    m_events.TakeAbort();
    // Status 0 promises that the aborted command completes; without that promise there is nothing to wait
    // for.
    return aborted == kLinkGood ? m_events.WaitForCompletion() : aborted;
}

/// Tells the monitor of the command that runs, if it has one. The command's operation waits for the end of
/// the report before it returns, unless the report comes out of that operation itself.
template <class Tell>
void CP32Wrap::TellMonitor(Tell tell) {
    const std::lock_guard guard(m_monitorMutex);
    CProgressMonitor* const monitor = m_monitor;
    if (monitor == nullptr) {
        return;
    }
    try {
        tell(*monitor);
    } catch (...) { // NOLINT(bugprone-empty-catch): its own trouble, and no reason to tell it nothing more
    }
    if (m_monitor == nullptr) { // a request out of the report has taken it away
        m_monitor = monitor;
    }
}

void CP32Wrap::ReportProgress(std::uint32_t done, std::uint32_t total) {
    if (total == 0) {
        return;
    }
    const int percent = done >= total ? 100 : static_cast<int>(static_cast<double>(done) * 100.0 / total);
    TellMonitor([&](CProgressMonitor& monitor) { monitor.SetPercent(percent); });
}

void CP32Wrap::ReportTransfer(std::int32_t value) {
    TellMonitor([&](CProgressMonitor& monitor) {
        auto* transfer = dynamic_cast<CTransferProgressMonitor*>(&monitor);
        if (transfer != nullptr && transfer->IsReportingTransfer()) {
            transfer->ReportTransfer(value);
        }
    });
}

void CP32Wrap::ReportLineStatus(LinkStatus status) {
    void (*handler)() = m_disconnectHandler;
    if (status == kLinkLineDisconnected && handler != nullptr) {
        handler();
    }
}

LinkStatus CP32Wrap::OpenPort(CProgressMonitor* monitor, const std::string& port,
                              const std::string& parameters) {
    return RunCommand(monitor, [&](IP32ls& server, Variant& status) {
        return server.OpenPort(Variant::FromText(port), Variant::FromText(parameters), status);
    });
}

LinkStatus CP32Wrap::ClosePort(CProgressMonitor* monitor) {
    return RunCommand(monitor, [](IP32ls& server, Variant& status) { return server.ClosePort(status); });
}

LinkStatus CP32Wrap::SetTransactionValues(CProgressMonitor* monitor, std::int32_t busyHoldoff,
                                          std::int32_t busyCount, std::int32_t resetResponse,
                                          std::int32_t response, std::int32_t tryCount,
                                          std::int32_t transmitDelay, std::int32_t globalTransmit) {
    const auto word = [](std::int32_t value) {
        return Variant::FromI2(static_cast<std::int16_t>(static_cast<std::uint32_t>(value) & 0xFFFFU));
    };
    return RunCommand(monitor, [&](IP32ls& server, Variant& status) {
        return server.SetTransactionValues(word(busyHoldoff), word(busyCount), word(resetResponse),
                                           word(response), word(tryCount), word(transmitDelay),
                                           word(globalTransmit), status);
    });
}

LinkStatus CP32Wrap::ModemConnect(CProgressMonitor* monitor, const std::string& modemName,
                                  std::int32_t lineAddress, const std::string& countryCode,
                                  const std::string& areaCode, const std::string& numberToDial,
                                  std::uint8_t useCountryAndAreaCodes) {
    const auto dial = [&](IP32ls& server, Variant& status) {
        return server.ModemConnect(Variant::FromText(modemName), Variant::FromI4(lineAddress),
                                   Variant::FromText(countryCode), Variant::FromText(areaCode),
                                   Variant::FromText(numberToDial), Variant::FromUI1(useCountryAndAreaCodes),
                                   status);
    };
    return RunOnce(monitor, [&] {
        const std::lock_guard lock(m_commandLock);
        return StartAndAwait(dial);
    });
}

LinkStatus CP32Wrap::ModemHangUp(CProgressMonitor* monitor) {
    return RunCommand(monitor, [](IP32ls& server, Variant& status) { return server.ModemHangUp(status); });
}

} // namespace ruvo
