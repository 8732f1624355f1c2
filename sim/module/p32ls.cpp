// The simulated comms server as a loadable module.
#include "link/seam/server_module.h"
#include "platform/standard_error.h"
#include "sim/server/served_connection.h"
#include "sim/server/simulated_connection.h"

#include <cstdio>
#include <exception>
#include <string>

namespace {

void PrintError(const char* before, const char* text) noexcept {
    std::fprintf(stderr, "%s%s\n", before, text);
}

ruvo::IServerConnection* Connect() noexcept {
    try {
        ruvo::sim::SServed served =
            ruvo::sim::ConnectToServedFile(ruvo::sim::SubstationPath(), [](const std::string& line) {
                ruvo::WriteStandardError("p32ls: " + line);
            });
        if (!served.connection) {
            PrintError("", served.error.c_str());
        }
        return served.connection.release();
    } catch (const std::exception& error) {
        PrintError("p32ls: ", error.what());
        return nullptr;
    } catch (...) {
        PrintError("p32ls: ", "a failure of an unknown kind");
        return nullptr;
    }
}

void Disconnect(ruvo::IServerConnection* connection) noexcept {
    delete connection;
}

constexpr ruvo::SServerModule kModule{ruvo::kServerInterfaceVersion, Connect, Disconnect};

} // namespace

extern "C" [[gnu::visibility("default")]] const ruvo::SServerModule* P32lsModule() {
    return &kModule;
}
