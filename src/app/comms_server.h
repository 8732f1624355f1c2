// The comms server for as long as a program needs it.
#pragma once

namespace ruvo {

/// The COM runtime and the client of the comms server: started together, released together.
class CCommsServer {
public:
    CCommsServer() = default;
    CCommsServer(const CCommsServer&) = delete;
    CCommsServer& operator=(const CCommsServer&) = delete;
    /// Lets go of what is still held.
    ~CCommsServer();

    /// Starts the runtime, unless it is held already, and creates the client. False when one of them fails.
    [[nodiscard]] bool Start();
    /// Lets the server go, and then the runtime; nothing where the runtime did not start.
    void Stop();

    /// False until the runtime has started: the server has not been tried then.
    [[nodiscard]] bool HasRuntime() const { return m_hasRuntime; }

private:
    bool m_hasRuntime = false;
};

} // namespace ruvo
