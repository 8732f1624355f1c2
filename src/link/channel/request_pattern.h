// The pattern that every request to the comms server follows.
#pragma once

#include "link/channel/channel.h"
#include "link/channel/password_check.h"
#include "link/seam/variant.h"

#include <atomic>
#include <string>

namespace ruvo {

inline Variant CellVariant(CellAddress cell) {
    return Variant::FromI2(static_cast<std::int16_t>(cell));
}

/// What has come of requests, for who tells of them.
struct SRequestAccount {
    bool hasRelayAnswered = false;      ///< even if only by refusing
    LinkStatus lastFailure = kLinkGood; ///< the last status that is no success
};

/// Runs requests on the channel. A request is a number of passes; a pass is one server call, or a start, a
/// wait and a fetch, under the command lock. The lock is free between two passes, when a password is entered.
class CRequestPattern {
public:
    /// Borrows both for its own life.
    CRequestPattern(CChannel& channel, IPasswordCheck& check) : m_channel(channel), m_check(check) {}

    CChannel& Channel() { return m_channel; }
    Variant Address() const { return m_channel.Address(); }

    /// A whole request: `pass` is repeated as long as the relay asks for a password and the entry succeeds.
    /// `name` is the operation's, for the trace.
    template <class Pass>
    LinkStatus RunRequest(CProgressMonitor* monitor, const char* name, Pass pass, CellAddress cell = 0);
    /// A request of one call without outputs.
    template <class Call>
    LinkStatus RunWrite(CProgressMonitor* monitor, const char* name, Call call, CellAddress cell = 0);
    /// A command without password entry.
    template <class Pass>
    LinkStatus RunOnce(CProgressMonitor* monitor, Pass pass);
    /// The same of one call without outputs.
    template <class Call>
    LinkStatus RunCommand(CProgressMonitor* monitor, Call call);

    /// One pass of a request that answers at once. `unpack` takes the outputs apart and is called for status
    /// 0 only; false makes the status 254.
    template <class Call, class Unpack>
    LinkStatus RunPass(Call call, Unpack unpack);
    /// One pass of a request that is started, completes later and is then fetched.
    template <class Start, class Fetch, class Unpack>
    LinkStatus RunStartedPass(Start start, Fetch fetch, Unpack unpack);

    /// What has come of the requests since it was last taken.
    SRequestAccount TakeAccount() {
        return {m_hasRelayAnswered.exchange(false), m_lastFailure.exchange(kLinkGood)};
    }

private:
    template <class Action>
    static LinkStatus CaughtAsFailure(Action action) noexcept;
    LinkStatus Noted(LinkStatus status) noexcept {
        if (!IsWriteGood(status)) {
            m_lastFailure = status;
        }
        return status;
    }

    CChannel& m_channel;
    IPasswordCheck& m_check;
    std::atomic<bool> m_hasRelayAnswered = false;
    std::atomic<LinkStatus> m_lastFailure = kLinkGood;
};

/// What is left of a request that cannot be carried through: no memory for it or its reply, or a wait that
/// would never end. For the caller it has not come through.
template <class Action>
LinkStatus CRequestPattern::CaughtAsFailure(Action action) noexcept {
    try {
        return action();
    } catch (...) {
        return kLinkComFailure;
    }
}

template <class Call, class Unpack>
LinkStatus CRequestPattern::RunPass(Call call, Unpack unpack) {
    const CChannel::CommandLock lock(m_channel.Lock());
    m_channel.ResetCompletion();
    const LinkStatus status = m_channel.CallServer(call);
    return status == kLinkGood && !unpack() ? kLinkBadReply : status;
}

template <class Start, class Fetch, class Unpack>
LinkStatus CRequestPattern::RunStartedPass(Start start, Fetch fetch, Unpack unpack) {
    const CChannel::CommandLock lock(m_channel.Lock());
    LinkStatus status = m_channel.StartAndWait(start);
    if (status == kLinkGood) {
        status = m_channel.CallServer(fetch);
    }
    return status == kLinkGood && !unpack() ? kLinkBadReply : status;
}

template <class Pass>
LinkStatus CRequestPattern::RunRequest(CProgressMonitor* monitor, const char* name, Pass pass,
                                       CellAddress cell) {
    const CMonitorSlot::CMonitorScope loan(m_channel.Monitor(), monitor);
    if (!m_channel.Begin()) {
        return Noted(kLinkAborted);
    }
    return Noted(CaughtAsFailure([&] {
        bool passwordEntered = false;
        bool repeat = true;
        LinkStatus status = kLinkGood;
        while (repeat) {
            m_channel.Monitor().Store(monitor); // a password entry in between has released it
            status = pass();
            if (!m_hasRelayAnswered && (IsWriteGood(status) || IsReply(status))) {
                m_hasRelayAnswered = true;
            }
            if (IsPasswordRequest(status)) {
                m_check.ProcessPasswordRequest(monitor, status, passwordEntered, repeat,
                                               std::string("CP32Wrap::") + name + " calls EnterPassword()",
                                               cell);
            } else {
                repeat = false;
            }
        }
        return status;
    }));
}

template <class Call>
LinkStatus CRequestPattern::RunWrite(CProgressMonitor* monitor, const char* name, Call call,
                                     CellAddress cell) {
    return RunRequest(
        monitor, name, [&] { return RunPass(call, [] { return true; }); }, cell);
}

template <class Pass>
LinkStatus CRequestPattern::RunOnce(CProgressMonitor* monitor, Pass pass) {
    const CMonitorSlot::CMonitorScope loan(m_channel.Monitor(), monitor);
    return Noted(m_channel.Begin() ? CaughtAsFailure(pass) : kLinkAborted);
}

template <class Call>
LinkStatus CRequestPattern::RunCommand(CProgressMonitor* monitor, Call call) {
    return RunOnce(monitor, [&] { return RunPass(call, [] { return true; }); });
}

} // namespace ruvo
