// Result codes of start-up, load and check. Scripts know the numbers: never renumber.
#pragma once

#include <cstdint>

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

} // namespace ruvo
