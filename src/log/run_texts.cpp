#include "log/run_texts.h"

#include "base/text.h"
#include "config/ini_keys.h"
#include "log/connection_details.h"

namespace ruvo {

std::string ConnectionText(const CRunContext& context) {
    const CRuvoConfig& config = context.Config();
    const SConnectionDetails& details = ConnectionDetails();
    const std::string address = ", device address: " + std::to_string(details.deviceAddress);
    std::string text = "Connection details - ";
    const ELink link = SelectedLink(config);
    if (link == ELink::Ethernet) {
        text += "device IP: " + details.ipAddress + address +
                ", bus address: " + std::to_string(details.busAddress);
    } else if (link == ELink::Modem) {
        text += "modem name: " + config.TapiModemName() + ", number to dial: " + config.TapiNumberToDial() +
                address;
    } else {
        text += "COM Port: " + details.comPort + address;
    }
    return text + ".";
}

std::string OpenPortFailedText(const std::string& port, const std::string& parameters) {
    return "Failed to open COM port. Port: " + port + ", connection parameters: " + parameters + ".";
}

std::string ModemConnectFailedText(const CRuvoConfig& config) {
    return "Modem connect failed. Modem name: " + config.TapiModemName() +
           ", number to dial: " + config.TapiNumberToDial() + ".";
}

std::string EthernetFailedText(const std::string& connection) {
    return "Failed to open ethernet connection. Connection string: " + connection + ".";
}

std::string PortPlaceText(const std::string& port) {
    return "Port: " + port + ".";
}

std::string RelayPlaceText(const std::string& ip, std::int32_t deviceAddress, std::int32_t busAddress) {
    return "Device IP: " + ip + ", device address: " + std::to_string(deviceAddress) +
           ", bus address: " + std::to_string(busAddress) + ".";
}

std::string OpenIncompleteText(const std::string& place) {
    return "There were problems with setting transaction values. " + place;
}

std::string LoginProbeFailedText(const CRunContext& context) {
    return "Test connection failed. Unable to connect to the device or password is invalid. " +
           ConnectionText(context);
}

std::string UnrecognizedPasswordCodeText(int code) {
    return "Unrecognized error code passed to password callback. Error code: " + std::to_string(code) + ".";
}

std::string ExtractionProblemText(const CRunContext& context) {
    return "A problem occured during events extraction. " + ConnectionText(context);
}

std::string RunEndedText(std::string_view name, std::size_t relaysNotVisited) {
    return "Run ended by " + std::string(name) + "; " + Counted(relaysNotVisited, "relay") + " not visited.";
}

std::string ExceptionText(std::string_view kind, std::string_view what) {
    return std::string(kind) + " exception occured:" + std::string(what);
}

} // namespace ruvo
