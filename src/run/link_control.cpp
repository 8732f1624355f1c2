#include "run/link_control.h"

#include "link/client.h"
#include "link/seam/tunnel_text.h"
#include "log/error_log.h"
#include "log/run_texts.h"

namespace ruvo {

namespace {

CP32Wrap& Link() {
    return *CP32Wrap::GetInstance();
}

bool OpenSerialPort(const CRuvoConfig& config) {
    const std::string parameters =
        std::to_string(config.BaudRate()) + "," + (config.ElevenBits() != 0 ? "E" : "N") + ",8,1";
    const LinkStatus status = Link().OpenPort(nullptr, config.CommPort(), parameters);
    if (status != kLinkGood) {
        LogStatusMessage(OpenPortFailedText(config.CommPort(), parameters), status);
    }
    return status == kLinkGood;
}

bool DialModem(const CRuvoConfig& config) {
    const LinkStatus status =
        Link().ModemConnect(nullptr, config.TapiModemName(), config.TapiLineAddress(),
                            config.TapiCountryCode(), config.TapiAreaCode(), config.TapiNumberToDial(),
                            static_cast<std::uint8_t>(config.TapiUseCountryAndAreaCodes()));
    if (status != kLinkGood && !Link().HasCutShort()) {
        LogStatusMessage(ModemConnectFailedText(config), status);
    }
    return status == kLinkGood;
}

/// Sets the transaction values of a link that has just been opened; without them it is closed again.
bool CompleteOpening(CRunContext& context, const std::string& place) {
    if (ApplyTransactionValues(context)) {
        return true;
    }
    CloseLink(context);
    LogMessage(OpenIncompleteText(place), false);
    return false;
}

} // namespace

bool OpenSerialOrModemLink(CRunContext& context) {
    const CRuvoConfig& config = context.Config();
    if (config.UseModem() == 0) {
        if (config.UseEthernet() != 0 || !OpenSerialPort(config)) {
            return false;
        }
    } else {
        if (!DialModem(config)) {
            return false;
        }
        context.SetModemConnected(true);
    }
    context.SetLinkOpen(true); // at once: if anything fails from here on, the link is closed
    return CompleteOpening(context, PortPlaceText(config.CommPort()));
}

bool OpenEthernetLink(CRunContext& context, const std::string& ip, std::int32_t deviceAddress,
                      std::int32_t busAddress) {
    if (context.Config().UseEthernet() == 0) {
        return false;
    }
    const std::string device = std::to_string(deviceAddress);
    const std::string bus = std::to_string(busAddress);
    const std::string connection = std::string(kTunnelPrefix) + "\"" + std::string(kTunnelTransport) +
                                   "\",\"" + ip + "\",\"" + bus + "\",\"" + device + "\",\"0\"";
    const LinkStatus status = Link().OpenPort(nullptr, connection, "");
    if (status != kLinkGood) {
        LogStatusMessage(EthernetFailedText(connection), status);
        return false;
    }
    context.SetLinkOpen(true);
    return CompleteOpening(context, RelayPlaceText(ip, deviceAddress, busAddress));
}

bool ApplyTransactionValues(const CRunContext& context) {
    const CRuvoConfig& config = context.Config();
    const LinkStatus status = Link().SetTransactionValues(
        nullptr, config.BusyHoldoff(), config.BusyCount(), config.ResetResponse(), config.Response(),
        config.TryCount(), config.TransmitDelay(), config.GlobalTransmit());
    if (status != kLinkGood) {
        LogStatusMessage(kTransactionValuesFailed, status);
    }
    return status == kLinkGood;
}

void CloseLink(CRunContext& context) {
    if (!context.IsLinkOpen()) {
        return;
    }
    const bool modem = context.IsModemConnected();
    // Cleared before the hang-up: even if that fails, the call is not hung up a second time. The link
    // counts as open until the server has been asked, so a call that throws leaves something to be closed.
    context.SetModemConnected(false);
    const LinkStatus status = modem ? Link().ModemHangUp(nullptr) : Link().ClosePort(nullptr);
    if (status != kLinkGood) {
        LogStatusMessage(modem ? kHangUpFailed : kClosePortFailed, status);
    }
    context.SetLinkOpen(false);
}

} // namespace ruvo
