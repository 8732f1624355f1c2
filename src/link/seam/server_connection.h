// One connection to the comms server. Which connector provides it is chosen when the program is linked.
#pragma once

#include "link/seam/ip32ls.h"

#include <cstdint>
#include <memory>

namespace ruvo {

/// A running server and its event connection. The destructor releases the server.
class IServerConnection {
public:
    virtual ~IServerConnection() = default;

    /// The server's operations; valid as long as the connection.
    virtual IP32ls& Server() = 0;
    /// Connects the sink, which must outlive the connection or its Unadvise. The cookie is never 0. False
    /// when the server refuses.
    virtual bool Advise(IP32lsSink_v2& sink, std::uint32_t& cookie) = 0;
    /// Ends the event connection; no sink method runs after it has returned.
    virtual void Unadvise(std::uint32_t cookie) = 0;
};

/// Starts (or finds) the server; null when that fails.
std::unique_ptr<IServerConnection> ConnectToServer();

} // namespace ruvo
