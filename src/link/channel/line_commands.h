// Opening, setting up and closing the way to the relays.
#pragma once

#include "link/channel/request_pattern.h"

#include <string>

namespace ruvo {

/// The commands about the port and the modem line; no relay answers them, so none enters a password. As
/// `CP32Wrap` documents them.
class CLineCommands {
public:
    /// Borrows the pattern for its own life.
    explicit CLineCommands(CRequestPattern& pattern) : m_pattern(pattern) {}

    LinkStatus OpenPort(CProgressMonitor* monitor, const std::string& port, const std::string& parameters);
    LinkStatus ClosePort(CProgressMonitor* monitor);
    LinkStatus SetTransactionValues(CProgressMonitor* monitor, std::int32_t busyHoldoff,
                                    std::int32_t busyCount, std::int32_t resetResponse, std::int32_t response,
                                    std::int32_t tryCount, std::int32_t transmitDelay,
                                    std::int32_t globalTransmit);
    LinkStatus ModemConnect(CProgressMonitor* monitor, const std::string& modemName, std::int32_t lineAddress,
                            const std::string& countryCode, const std::string& areaCode,
                            const std::string& numberToDial, std::uint8_t useCountryAndAreaCodes);
    LinkStatus ModemHangUp(CProgressMonitor* monitor);

private:
    CRequestPattern& m_pattern;
};

} // namespace ruvo
