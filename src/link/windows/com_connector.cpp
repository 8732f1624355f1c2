// The COM connector: the server is a program of its own, which COM starts when it is not running.
#include "link/seam/server_connection.h"

#include "link/seam/link_status.h"
#include "link/windows/com_server.h"
#include "link/windows/com_sink.h"
#include "platform/trace.h"

#include <algorithm>

namespace ruvo {

namespace {

bool Succeeded(HRESULT result, const char* step) {
    if (FAILED(result)) {
        TraceError("Comms server: %s failed: %08lX", step, static_cast<unsigned long>(result));
    }
    return SUCCEEDED(result);
}

/// A sink on its way to the client's: the watch over a started command ends when its completion comes.
class CWatchedSink final : public IP32lsSink_v2 {
public:
    CWatchedSink(IP32lsSink_v2& target, CComServer& server) : m_target(target), m_server(server) {}

    void OnProgress(const Variant& done, const Variant& total) noexcept override {
        m_target.OnProgress(done, total);
    }
    void OnCommandComplete(const Variant& status) noexcept override {
        m_server.CommandEnded();
        m_target.OnCommandComplete(status);
    }
    void OnCommandCompleteAlt(const Variant& status) noexcept override {
        m_server.CommandEnded();
        m_target.OnCommandCompleteAlt(status);
    }
    void OnLineStatus(const Variant& status) noexcept override { m_target.OnLineStatus(status); }
    void OnTransferProgress(const Variant& value) noexcept override { m_target.OnTransferProgress(value); }

private:
    IP32lsSink_v2& m_target;
    CComServer& m_server;
};

/// Used in the multithreaded apartment, see platform/com_runtime.h: the client blocks while it waits for the
/// events, so they must arrive on threads of the runtime.
class CComConnection final : public IServerConnection {
public:
    explicit CComConnection(CComPointer<::IP32ls> remote)
        : m_remote(std::move(remote)), m_server(m_remote, [this] { CommandLost(); }) {}
    CComConnection(const CComConnection&) = delete;
    CComConnection& operator=(const CComConnection&) = delete;
    ~CComConnection() override {
        while (!m_advised.empty()) {
            Unadvise(m_advised.back()->cookie);
        }
    }

    IP32ls& Server() override { return m_server; }
    bool Advise(IP32lsSink_v2& sink, std::uint32_t& cookie) override;
    void Unadvise(std::uint32_t cookie) override;

private:
    struct SAdvised {
        SAdvised(IP32lsSink_v2& target, CComServer& server)
            : watched(target, server), sink(CComPointer<CComSink>::Adopt(new CComSink(watched))) {}
        /// Whatever the server still holds: one that has died, or forgets, would hold the sink for ever.
        void Disconnect() {
            sink->Detach();
            Succeeded(CoDisconnectObject(sink.Get(), 0), "disconnecting the sink");
        }
        CWatchedSink watched;
        CComPointer<CComSink> sink;
        std::uint32_t cookie = 0;
    };

    CComPointer<IConnectionPoint> FindPoint();
    void CommandLost();

    CComPointer<::IP32ls> m_remote;
    std::mutex m_mutex; ///< of the list
    std::vector<std::shared_ptr<SAdvised>> m_advised;
    CComServer m_server; // last: its watch uses all of the above
};

CComPointer<IConnectionPoint> CComConnection::FindPoint() {
    CComPointer<IConnectionPointContainer> container;
    CComPointer<IConnectionPoint> point;
    if (!Succeeded(m_remote.Query(container), "asking for connection points") ||
        !Succeeded(container->FindConnectionPoint(__uuidof(::IP32lsSink_v2), point.Receive()),
                   "finding the connection point")) {
        return {};
    }
    return point;
}

bool CComConnection::Advise(IP32lsSink_v2& sink, std::uint32_t& cookie) {
    const auto advised = std::make_shared<SAdvised>(sink, m_server);
    const CComPointer<IConnectionPoint> point = FindPoint();
    DWORD given = 0;
    if (!point || !Succeeded(point->Advise(advised->sink.Get(), &given), "advising the sink")) {
        advised->Disconnect();
        return false;
    }
    advised->cookie = given;
    cookie = given;
    const std::lock_guard lock(m_mutex);
    m_advised.push_back(advised);
    return true;
}

void CComConnection::Unadvise(std::uint32_t cookie) {
    std::shared_ptr<SAdvised> advised;
    {
        const std::lock_guard lock(m_mutex);
        const auto found = std::ranges::find(m_advised, cookie, &SAdvised::cookie);
        if (found == m_advised.end()) {
            return;
        }
        advised = *found;
        m_advised.erase(found);
    }
    if (const CComPointer<IConnectionPoint> point = FindPoint()) {
        Succeeded(point->Unadvise(cookie), "unadvising the sink");
    }
    advised->Disconnect();
}

void CComConnection::CommandLost() {
    std::vector<std::shared_ptr<SAdvised>> advised;
    {
        const std::lock_guard lock(m_mutex);
        advised = m_advised;
    }
    VARIANT status;
    VariantInit(&status);
    status.vt = VT_I4;
    status.lVal = static_cast<LONG>(kLinkComFailure);
    for (const auto& each : advised) {
        each->sink->OnCommandComplete(status); // as the server would, so that a detached sink is left alone
    }
}

} // namespace

std::unique_ptr<IServerConnection> ConnectToServer() {
    constexpr DWORD kAnyServer =
        CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
    CComPointer<IUnknown> object;
    CComPointer<::IP32ls> server;
    if (!Succeeded(CoCreateInstance(CLSID_P32LS, nullptr, kAnyServer, IID_IUnknown,
                                    reinterpret_cast<void**>(object.Receive())),
                   "creation") ||
        !Succeeded(OleRun(object.Get()), "running") ||
        !Succeeded(object.Query(server), "asking for IP32ls")) {
        return nullptr;
    }
    return std::make_unique<CComConnection>(std::move(server));
}

} // namespace ruvo
