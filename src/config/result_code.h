// Result codes of start-up, load and check, with their messages. Scripts know the numbers: never renumber.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ruvo {

/// The outcome of load and check and of start-up. The numbers missing here (1 to 3, 5, 8 to 11) keep their
/// messages, but no rule yields them any more.
enum class EResultCode : std::int32_t {
    Success = 0,
    IniFileNotOpened = 4,
    LogFileNotWritable = 6,
    CommsServerFailed = 7,
    BaudRateInvalid = 12,
    ElevenBitsInvalid = 13,
    BusyHoldoffInvalid = 14,
    BusyCountInvalid = 15,
    ResetResponseInvalid = 16,
    ResponseInvalid = 17,
    TryCountInvalid = 18,
    TransmitDelayInvalid = 19,
    GlobalTransmitInvalid = 20,
    UseModemInvalid = 21,
    UseCountryAndAreaCodesInvalid = 22,
    UseEthernetInvalid = 23,
    EthernetSectionEmpty = 24,
    SerialSectionEmpty = 25,
    SerialAddressInvalid = 26,
    EventRootInvalid = 27,
    RegistryDestinationInvalid = 28,
    EthernetIpInvalid = 29,
    EthernetBusInvalid = 30,
    EthernetDeviceInvalid = 31,
    ModemSectionEmpty = 32,
    ModemAddressInvalid = 33,
    ModemNameMissing = 34,
    EthernetDuplicate = 35,
    SerialDuplicate = 36,
    ModemDuplicate = 37,
    PasswordsDuplicate = 38,
    Last = PasswordsDuplicate,
};

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
