// The parsers of an Ethernet entry, "IP,device,bus". Input: the entry's text.
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"

#include "config/ethernet_entry.h"

#include <arpa/inet.h>

namespace ruvo::fuzz {

namespace {

/// What the system calls an address in dotted form, which takes no leading zeros either.
bool IsAddressToSystem(const std::string& text) {
    in_addr address{};
    return text.find('\0') == std::string::npos && inet_pton(AF_INET, text.c_str(), &address) == 1;
}

void Check(const std::string& entry) {
    const std::string ip = ParseEthernetIp(entry);
    const std::int32_t device = ParseEthernetDeviceAddress(entry);
    const std::int32_t bus = ParseEthernetBusAddress(entry);
    Require(IsValidIpAddress(ip) == IsAddressToSystem(ip), "an IP address is what the system takes for one");
    Require(IsValidIpAddress(entry) == IsAddressToSystem(entry), "so is any other text");
    Require(ip == "-1" || ip == entry.substr(0, entry.find(',')), "the IP text is the first field");
    Require(device == kInvalidAddress || IsRelayAddress(device), "a device address is valid or refused");
    Require(bus == kInvalidAddress || bus == 0 || IsRelayAddress(bus), "a bus address likewise");
    if (!IsValidIpAddress(ip) || device == kInvalidAddress || bus == kInvalidAddress) {
        return;
    }
    // An entry that passes is what its parts give, but for an empty last field.
    const std::string parts = ip + "," + std::to_string(device);
    Require(entry == (bus == 0 ? parts : parts + "," + std::to_string(bus)) ||
                (bus == 0 && entry == parts + ","),
            "a good entry has one spelling");
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check(std::string(data, data + size));
    return 0;
}
