// What the registry knows of the server: where COM finds it, its type library, the substation to serve.
#pragma once

#include <chrono>
#include <string>

namespace ruvo::sim {

/// Registers this program, and the file that it serves from then on: a substation or a recording. Empty, or a
/// reason.
std::string RegisterServer(const std::string& substation);
/// Takes everything out of the registry again; nothing there is no failure. Empty, or a reason.
std::string UnregisterServer();

/// The registered file; without one what SubstationPath says.
std::string RegisteredSubstation();
/// How long a server without clients waits for the next one: the number "ReconnectSeconds" beside the
/// substation, else five seconds.
std::chrono::seconds RegisteredReconnectLimit();
/// How long a client may be silent before the server looks whether it still lives: the number "IdleSeconds"
/// beside the substation, else five minutes.
std::chrono::seconds RegisteredIdleLimit();

} // namespace ruvo::sim
