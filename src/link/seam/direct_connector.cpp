// The direct connector: the server is a loadable module that is called in this process.
#include "link/seam/server_connection.h"
#include "link/seam/server_module.h"

#include "platform/modules.h"
#include "platform/trace.h"

namespace ruvo {

namespace {

/// A server inside a module; keeps the module loaded as long as the connection lives.
class CDirectConnection final : public IServerConnection {
public:
    CDirectConnection() = default;
    CDirectConnection(const CDirectConnection&) = delete;
    CDirectConnection& operator=(const CDirectConnection&) = delete;
    ~CDirectConnection() override {
        if (m_inner == nullptr || m_table == nullptr) {
            return;
        }
        try {
            m_table->Disconnect(m_inner);
        } catch (...) { // a module that fails while it is released is released
        }
    }

    bool Open(const std::string& path) {
        const SLoadedServer loaded = LoadServerModule(path, m_module);
        m_table = loaded.table;
        if (m_table == nullptr) {
            TraceError("Comms server: %s", loaded.failure.c_str());
            return false;
        }
        m_inner = m_table->Connect();
        if (m_inner == nullptr) {
            TraceError("Comms server: %s: loaded, but it refused to start", SystemModulePath(path).c_str());
        }
        return m_inner != nullptr;
    }

    IP32ls& Server() override { return m_inner->Server(); }
    bool Advise(IP32lsSink_v2& sink, std::uint32_t& cookie) override { return m_inner->Advise(sink, cookie); }
    void Unadvise(std::uint32_t cookie) override { m_inner->Unadvise(cookie); }

private:
    CModule m_module;
    const SServerModule* m_table = nullptr;
    IServerConnection* m_inner = nullptr;
};

} // namespace

std::unique_ptr<IServerConnection> ConnectToServer() {
    auto connection = std::make_unique<CDirectConnection>();
    if (!connection->Open(FindServerModule().path)) {
        return nullptr;
    }
    return connection;
}

} // namespace ruvo
