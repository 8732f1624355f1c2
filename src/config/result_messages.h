// The message of each result code, as users and scripts know it.
#pragma once

#include "config/result_code.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace ruvo {

/// One message per number from 0 to 38.
inline constexpr std::array<std::string_view, static_cast<std::size_t>(EResultCode::Last) + 1>
    kResultMessages{
        "Success - No input errors found.",
        "MFC initialization failed.",
        "No INI file specified.",
        "No INI file specified.",
        "Can't open INI file.",
        "Can't resolve log directory.",
        "Can't create/open log file.",
        "P32LS failed to open.",
        "ComtradeName error.",
        "ComtradeDir error.",
        "ComtradeFormat error - Not 1996 or 1999.",
        "MaxAddress or MinAddress error.",
        "BaudRate value error.",
        "ElevenBits value error - Not 0 or 1.",
        "BusyHoldoff value error.",
        "BusyCount value error.",
        "ResetResponse value error.",
        "Response value error.",
        "TryCount value error.",
        "TransmitDelay value error.",
        "GlobalTransmit value error.",
        "UseModem value error.",
        "TAPI_UseCountryAndAreaCodes value error.",
        "UseEthernet value error.",
        "[RUVO_ETHERNET] section of the INI file is empty.",
        "[RUVO_SERIAL] section of the INI file is empty.",
        "Device address specified in the [RUVO_SERIAL] section of the INI file is invalid.",
        "EventRootDir path is invalid or write protected.",
        "EventRootDir path is invalid or write protected (Q7 Studio).",
        "IP address specified in the [RUVO_ETHERNET] section of the INI file is invalid.",
        "Bus address specified in the [RUVO_ETHERNET] section of the INI file is invalid.",
        "Device address specified in the [RUVO_ETHERNET] section of the INI file is invalid.",
        "[RUVO_MODEM] section of the INI file is empty.",
        "Device address specified in the [RUVO_MODEM] section of the INI file is invalid.",
        "Modem name is not specified.",
        "[RUVO_ETHERNET] section contains duplicate entries.",
        "[RUVO_SERIAL] section contains duplicate entries.",
        "[RUVO_MODEM] section contains duplicate entries.",
        "[RUVO_PASSWORDS] section contains duplicate entries.",
    };
static_assert(!kResultMessages.back().empty(), "one message per result code");

/// The message of a result code; empty for a number outside the table.
constexpr std::string_view ResultMessage(EResultCode code) {
    const auto index = static_cast<std::size_t>(code);
    return index < kResultMessages.size() ? kResultMessages[index] : std::string_view();
}

} // namespace ruvo
