// The fields of an Ethernet entry, "IP,device,bus". They are parsed when used, so that each can fail by
// itself.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ruvo {

/// What the device and bus parsers give for a field that is no address.
inline constexpr std::int32_t kInvalidAddress = -1;

/// True for an address that a relay can have.
constexpr bool IsRelayAddress(std::int32_t address) {
    return address >= 1 && address <= 254;
}

/// The text before the first comma; "-1", which is no IP address, when it is shorter than 7 characters.
std::string ParseEthernetIp(std::string_view entry);

/// True for a dotted address of four numbers from 0 to 255, without leading zeros.
bool IsValidIpAddress(std::string_view text);

/// The number between the first and the second comma, 1 to 254; kInvalidAddress when there is none such.
std::int32_t ParseEthernetDeviceAddress(std::string_view entry);

/// The number after the second comma, 1 to 254; 0 when there is none; else kInvalidAddress.
std::int32_t ParseEthernetBusAddress(std::string_view entry);

} // namespace ruvo
