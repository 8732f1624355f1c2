// The simulated comms server as a loadable module.
#include "link/server_module.h"
#include "sim/simulated_connection.h"

#include <cstdio>
#include <exception>
#include <string>

namespace {

void Complain(const std::string& line) {
    const std::string text = line + "\n";
    std::fputs(text.c_str(), stderr);
}

ruvo::IServerConnection* Connect() {
    try {
        std::string refusal;
        auto connection = ruvo::sim::ConnectToSubstation(ruvo::sim::SubstationPath(), refusal);
        if (!connection) {
            Complain(refusal);
        }
        return connection.release();
    } catch (const std::exception& error) {
        Complain(std::string("p32ls: ") + error.what());
        return nullptr;
    }
}

void Disconnect(ruvo::IServerConnection* connection) {
    delete connection;
}

constexpr ruvo::SServerModule kModule{ruvo::kServerInterfaceVersion, Connect, Disconnect};

} // namespace

extern "C" [[gnu::visibility("default")]] const ruvo::SServerModule* P32lsModule() {
    return &kModule;
}
