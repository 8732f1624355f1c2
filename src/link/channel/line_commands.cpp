#include "link/channel/line_commands.h"

namespace ruvo {

LinkStatus CLineCommands::OpenPort(CProgressMonitor* monitor, const std::string& port,
                                   const std::string& parameters) {
    return m_pattern.RunCommand(monitor, [&](IP32ls& server, Variant& status) {
        return server.OpenPort(Variant::FromText(port), Variant::FromText(parameters), status);
    });
}

LinkStatus CLineCommands::ClosePort(CProgressMonitor* monitor) {
    return m_pattern.RunCommand(monitor,
                                [](IP32ls& server, Variant& status) { return server.ClosePort(status); });
}

LinkStatus CLineCommands::SetTransactionValues(CProgressMonitor* monitor, std::int32_t busyHoldoff,
                                               std::int32_t busyCount, std::int32_t resetResponse,
                                               std::int32_t response, std::int32_t tryCount,
                                               std::int32_t transmitDelay, std::int32_t globalTransmit) {
    const auto word = [](std::int32_t value) {
        return Variant::FromI2(static_cast<std::int16_t>(static_cast<std::uint32_t>(value) & 0xFFFFU));
    };
    return m_pattern.RunCommand(monitor, [&](IP32ls& server, Variant& status) {
        return server.SetTransactionValues(word(busyHoldoff), word(busyCount), word(resetResponse),
                                           word(response), word(tryCount), word(transmitDelay),
                                           word(globalTransmit), status);
    });
}

LinkStatus CLineCommands::ModemConnect(CProgressMonitor* monitor, const std::string& modemName,
                                       std::int32_t lineAddress, const std::string& countryCode,
                                       const std::string& areaCode, const std::string& numberToDial,
                                       std::uint8_t useCountryAndAreaCodes) {
    const auto dial = [&](IP32ls& server, Variant& status) {
        return server.ModemConnect(Variant::FromText(modemName), Variant::FromI4(lineAddress),
                                   Variant::FromText(countryCode), Variant::FromText(areaCode),
                                   Variant::FromText(numberToDial), Variant::FromUI1(useCountryAndAreaCodes),
                                   status);
    };
    return m_pattern.RunOnce(monitor, [&] {
        const CChannel::CommandLock lock(m_pattern.Channel().Lock());
        return m_pattern.Channel().StartAndWait(dial);
    });
}

LinkStatus CLineCommands::ModemHangUp(CProgressMonitor* monitor) {
    return m_pattern.RunCommand(monitor,
                                [](IP32ls& server, Variant& status) { return server.ModemHangUp(status); });
}

} // namespace ruvo
