// The simulated comms server as a loadable module.
#include "link/seam/server_module.h"
#include "sim/server/playback.h"
#include "sim/server/simulated_connection.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <string>

namespace {

void PrintError(const char* before, const char* text) noexcept {
    std::fprintf(stderr, "%s%s\n", before, text);
}

ruvo::IServerConnection* Connect() noexcept {
    try {
        std::string error;
        bool isRecording = false;
        const std::string path = ruvo::sim::SubstationPath();
        std::unique_ptr<ruvo::IServerConnection> connection =
            ruvo::sim::ConnectToRecording(path, isRecording, error);
        if (!isRecording) {
            connection = ruvo::sim::ConnectToSubstation(path, error);
        }
        if (!connection) {
            PrintError("", error.c_str());
        }
        return connection.release();
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
