#include "log/connection_text.h"

#include "log/connection_details.h"

namespace ruvo {

std::string ConnectionText(const CRunContext& context) {
    const CRuvoConfig& config = context.Config();
    const SConnectionDetails& details = ConnectionDetails();
    const std::string address = ", device address: " + std::to_string(details.deviceAddress);
    std::string text = "Connection details - ";
    if (config.UseEthernet() == 1) {
        text += "device IP: " + details.ipAddress + address +
                ", bus address: " + std::to_string(details.busAddress);
    } else if (config.UseModem() == 1) {
        text += "modem name: " + config.TapiModemName() + ", number to dial: " + config.TapiNumberToDial() +
                address;
    } else {
        text += "COM Port: " + details.comPort + address;
    }
    return text + ".";
}

} // namespace ruvo
