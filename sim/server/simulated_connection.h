// A connection to the simulated comms server. Each has a server and a substation of its own.
#pragma once

#include "link/seam/server_connection.h"
#include "sim/server/simulated_server.h"

#include <memory>
#include <string>

namespace ruvo::sim {

class CSimulatedConnection final : public IServerConnection {
public:
    explicit CSimulatedConnection(std::unique_ptr<SSubstation> substation);

    IP32ls& Server() override { return m_server; }
    bool Advise(IP32lsSink_v2& sink, std::uint32_t& cookie) override;
    void Unadvise(std::uint32_t cookie) override { m_sinks.Remove(cookie); }

    /// Opens the files that the substation names; a reason when one cannot be opened, else empty.
    std::string OpenFiles() { return m_core.OpenFiles(); }

private:
    CSinkList m_sinks;
    CServerCore m_core;
    CSimulatedServer m_server;
};

/// The substation file to serve: P32LS_SUBSTATION, else substation.toml beside the program.
std::string SubstationPath();

/// Loads a substation file and connects to it. Null when it is refused; `error` then says why, in one line.
std::unique_ptr<CSimulatedConnection> ConnectToSubstation(const std::string& path, std::string& error);

} // namespace ruvo::sim
