// The entry point of a comms server that is a loadable module and called directly.
#pragma once

#include "link/seam/server_connection.h"

#include <cstdint>
#include <string>

namespace ruvo {

class CModule;

/// What the module's entry point returns. The version comes first, so that a client can always read it.
struct SServerModule {
    std::uint32_t interfaceVersion; ///< kServerInterfaceVersion of the headers that the module was built with
    IServerConnection* (*Connect)(); ///< a new connection, or null; released with Disconnect
    void (*Disconnect)(IServerConnection*);
};

/// Grows with every change of IP32ls, IP32lsSink_v2, Variant, IServerConnection or SServerModule.
inline constexpr std::uint32_t kServerInterfaceVersion = 1;

/// Name and type of the entry point: a C function that returns a table which lives as long as the module.
inline constexpr const char* kServerEntryPoint = "P32lsModule";
using ServerEntryPoint = const SServerModule* (*)();

/// Where the module is looked for.
struct SServerPlace {
    std::string path;     ///< full, with the ending of a library's name; empty for what can be no path
    std::string registry; ///< the part of the registry that names it; empty for the one beside our own code
};
SServerPlace FindServerModule();

/// What came of loading a server's module.
struct SLoadedServer {
    const SServerModule* table = nullptr; ///< as the module returns it; null for none of this version
    std::string failure;                  ///< why there is no table; begins with the file that was tried
};
SLoadedServer LoadServerModule(const std::string& path, CModule& module);

} // namespace ruvo
