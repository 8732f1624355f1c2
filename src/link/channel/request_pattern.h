// The pattern that every request follows; included by the files that implement CP32Wrap, by nobody else.
#pragma once

#include "link/client.h"

namespace ruvo {

/// The callbacks that the application registers; process-wide, set before the first request.
struct CP32Wrap::SCallbacks {
    GetPasswordFunction getPassword = nullptr;
    PasswordAcceptedFunction passwordAccepted = nullptr;
    UsernamePasswordFunction usernamePassword = nullptr;
    SecondEditionLoginFunction secondEditionLogin = nullptr;
    LoginAcceptedFunction loginAccepted = nullptr;
    LoginCancelledFunction loginCancelled = nullptr;
    SecurityEventFunction securityEvent = nullptr;
};

/// Lends the caller's monitor to the sink for the time of one operation. The sink reports on other threads,
/// so it must have let go of the monitor when the operation returns.
class CP32Wrap::CMonitorScope {
public:
    CMonitorScope(CP32Wrap& wrap, CProgressMonitor* monitor) : m_wrap(wrap), m_monitor(monitor) {
        m_wrap.StoreMonitor(monitor);
    }
    CMonitorScope(const CMonitorScope&) = delete;
    CMonitorScope& operator=(const CMonitorScope&) = delete;
    ~CMonitorScope() { m_wrap.ReleaseMonitor(m_monitor); }

private:
    CP32Wrap& m_wrap;
    CProgressMonitor* m_monitor;
};

inline Variant CellVariant(CellAddress cell) {
    return Variant::FromI2(static_cast<std::int16_t>(cell));
}

/// One server call under the command lock: its status, or 255 when it did not get through. `call` takes the
/// server and the result variant.
template <class Call>
LinkStatus CP32Wrap::CallServer(Call call) {
    if (m_connection == nullptr) {
        return kLinkComFailure;
    }
    try {
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

/// What is left of a request that cannot be carried through: no memory for it or its reply, or a wait that
/// would never end. For the caller it has not come through.
template <class Action>
LinkStatus CaughtAsFailure(Action action) noexcept {
    try {
        return action();
    } catch (...) {
        return kLinkComFailure;
    }
}

/// One pass of a request that answers at once. `unpack` takes the outputs apart and is called for status 0
/// only; false makes the status 254.
template <class Call, class Unpack>
LinkStatus CP32Wrap::RunPass(Call call, Unpack unpack) {
    const std::lock_guard lock(m_commandLock);
    ResetCompletion();
    const LinkStatus status = CallServer(call);
    return status == kLinkGood && !unpack() ? kLinkBadReply : status;
}

/// Starts a command and waits for its end; the caller holds the command lock. A command that a report on this
/// one starts is refused, since nobody could tell their completions apart.
template <class Start>
LinkStatus CP32Wrap::StartAndAwait(Start start) {
    if (m_isAwaiting) {
        return kLinkComFailure;
    }
    m_events.ResetCompletion();
    m_isAwaiting = true;
    const LinkStatus started = CallServer(start);
    const LinkStatus ended = started == kLinkGood ? WaitForCommand() : started;
    m_isAwaiting = false;
    return ended;
}

/// One pass of a request that is started, completes later and is then fetched.
template <class Start, class Fetch, class Unpack>
LinkStatus CP32Wrap::RunStartedPass(Start start, Fetch fetch, Unpack unpack) {
    const std::lock_guard lock(m_commandLock);
    LinkStatus status = StartAndAwait(start);
    if (status == kLinkGood) {
        status = CallServer(fetch);
    }
    return status == kLinkGood && !unpack() ? kLinkBadReply : status;
}

/// A whole request: passes are repeated as long as the relay asks for a password and the entry succeeds.
template <class Pass>
LinkStatus CP32Wrap::RunRequest(CProgressMonitor* monitor, const char* name, Pass pass, CellAddress cell) {
    const auto self = shared_from_this(); // DestroyInstance may run while we are between two calls
    const CMonitorScope scope(*this, monitor);
    if (!Begin()) {
        return kLinkAborted;
    }
    return CaughtAsFailure([&] {
        bool passwordEntered = false;
        bool repeat = true;
        LinkStatus status = kLinkGood;
        while (repeat) {
            StoreMonitor(monitor); // the requests of a password entry in between have released it
            status = pass();
            if (IsPasswordRequest(status)) {
                ProcessPasswordRequest(monitor, status, passwordEntered, repeat,
                                       std::string("CP32Wrap::") + name + " calls EnterPassword()", cell);
            } else {
                repeat = false;
            }
        }
        return status;
    });
}

/// A request without outputs.
template <class Call>
LinkStatus CP32Wrap::RunWrite(CProgressMonitor* monitor, const char* name, Call call, CellAddress cell) {
    return RunRequest(
        monitor, name, [&] { return RunPass(call, [] { return true; }); }, cell);
}

/// A command without password entry.
template <class Pass>
LinkStatus CP32Wrap::RunOnce(CProgressMonitor* monitor, Pass pass) {
    const auto self = shared_from_this();
    const CMonitorScope scope(*this, monitor);
    return Begin() ? CaughtAsFailure(pass) : kLinkAborted;
}

/// The same without outputs.
template <class Call>
LinkStatus CP32Wrap::RunCommand(CProgressMonitor* monitor, Call call) {
    return RunOnce(monitor, [&] { return RunPass(call, [] { return true; }); });
}

} // namespace ruvo
