// The server that a served file makes: its substation's, or the playback of a recording.
#pragma once

#include "link/seam/server_connection.h"

#include <functional>
#include <memory>
#include <string>

namespace ruvo::sim {

struct SServed {
    std::unique_ptr<IServerConnection> connection; ///< null when the file is refused
    bool isRecording = false;
    std::string error; ///< why it is refused, in one line
};

/// `report` gets what a playback has to say, in lines that name the file; it is called from any thread.
SServed ConnectToServedFile(const std::string& path, std::function<void(const std::string&)> report);

/// Why that would fail as to what is in the file; empty if it would not.
std::string WhyNotServed(const std::string& path);

} // namespace ruvo::sim
