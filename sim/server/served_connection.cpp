#include "sim/server/served_connection.h"

#include "sim/server/playback.h"
#include "sim/server/simulated_connection.h"

#include <utility>

namespace ruvo::sim {

SServed ConnectToServedFile(const std::string& path, std::function<void(const std::string&)> report) {
    SServed served;
    served.connection = ConnectToRecording(path, served.isRecording, served.error, std::move(report));
    if (!served.isRecording) {
        served.connection = ConnectToSubstation(path, served.error);
    }
    return served;
}

std::string WhyNotServed(const std::string& path) {
    bool isRecording = false;
    std::string error = WhyNotPlayed(path, isRecording);
    return isRecording ? error : LoadSubstation(path).error;
}

} // namespace ruvo::sim
