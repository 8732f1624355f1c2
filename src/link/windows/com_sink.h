// The COM object that the server calls with its events.
#pragma once

#include "link/seam/ip32ls.h"
#include "link/windows/dual_interface.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace ruvo {

/// Lets calls through until it is closed.
class CCallGate {
public:
    /// With memory for more calls than a server has threads: one that got none would be lost, and with it the
    /// word that a command has ended.
    CCallGate() { m_inside.reserve(64); }

    /// False once the gate is closed; otherwise Leave must follow.
    bool Enter();
    void Leave();
    /// Waits for the calls of other threads to leave; a call that closes the gate it came through does not
    /// wait for itself.
    void Close();

private:
    std::mutex m_mutex;
    std::condition_variable m_left;
    std::vector<std::thread::id> m_inside;
    bool m_closed = false;
};

/// Forwards to the client's sink. The server may hold it for longer than the client needs it, so
/// the client detaches from it. Its methods run on threads of the COM runtime, several at a time.
class CComSink final : public CDualInterface<::IP32lsSink_v2> {
public:
    using Target = ruvo::IP32lsSink_v2; // the plain name is the COM interface's here
    /// Borrows the target until Detach. The description comes from the registered type library, if there is
    /// one: only late-bound calls need it.
    explicit CComSink(Target& target);

    /// No method of the target runs after this has returned.
    void Detach() { m_gate.Close(); }

    STDMETHODIMP QueryInterface(REFIID id, void** result) override { return QueryOwn(id, result); }

    STDMETHODIMP OnProgress(VARIANT done, VARIANT total) override;
    STDMETHODIMP OnCommandComplete(VARIANT status) override;
    STDMETHODIMP OnCommandCompleteAlt(VARIANT status) override;
    STDMETHODIMP OnLineStatus(VARIANT status) override;
    STDMETHODIMP OnTransferProgress(VARIANT value) override;

private:
    ~CComSink() override = default;
    template <class Method, class... Values>
    HRESULT Forward(Method method, const Values&... values) noexcept;

    CCallGate m_gate;
    Target& m_target;
};

} // namespace ruvo
