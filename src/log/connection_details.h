// Which link and relay are being handled, for the ends of log lines.
#pragma once

#include <cstdint>
#include <string>

namespace ruvo {

struct SConnectionDetails {
    bool ethernetLink = false;
    bool serialLink = false; ///< neither flag set: the modem link
    std::string comPort;
    std::string modemName;
    std::string ipAddress;
    std::int32_t deviceAddress = -1;
    std::int32_t busAddress = -1;
};

/// The process-wide details; written and read by the thread of the run alone.
SConnectionDetails& ConnectionDetails();

/// Back to the state at process start.
void ResetConnectionDetails();

} // namespace ruvo
