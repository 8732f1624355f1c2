#include "sim/server/simulated_connection.h"

#include "platform/environment.h"
#include "platform/full_path.h"
#include "platform/modules.h"

namespace ruvo::sim {

CSimulatedConnection::CSimulatedConnection(std::unique_ptr<SSubstation> substation)
    : m_core(std::move(substation), m_sinks), m_server(m_core) {}

bool CSimulatedConnection::Advise(IP32lsSink_v2& sink, std::uint32_t& cookie) {
    cookie = m_sinks.Add(sink);
    return true;
}

std::string SubstationPath() {
    if (const auto path = EnvironmentValue("P32LS_SUBSTATION")) {
        return *path;
    }
    const std::string program = ProgramPath();
    return program.substr(0, program.find_last_of('\\') + 1) + "substation.toml";
}

std::unique_ptr<CSimulatedConnection> ConnectToSubstation(const std::string& path, std::string& error) {
    SLoadedSubstation loaded = LoadSubstation(path);
    if (!loaded.substation) {
        error = std::move(loaded.error);
        return nullptr;
    }
    auto connection = std::make_unique<CSimulatedConnection>(std::move(loaded.substation));
    if (const std::string reason = connection->OpenFiles(); !reason.empty()) {
        error = DisplayPath(path) + ":1: " + reason;
        return nullptr;
    }
    return connection;
}

} // namespace ruvo::sim
