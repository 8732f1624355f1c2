#include "config/ethernet_entry.h"

#include "config/configuration.h"

#include <cstddef>
#include <optional>

namespace ruvo {

namespace {

constexpr std::size_t kShortestIp = 7; // "0.0.0.0"
constexpr std::size_t kIpPartCount = 4;
constexpr std::int32_t kLargestIpPart = 255;

// What follows the first comma; none when there is no comma.
std::optional<std::string_view> BehindComma(std::string_view text) {
    const std::size_t comma = text.find(',');
    return comma == std::string_view::npos ? std::nullopt : std::optional(text.substr(comma + 1));
}

std::string_view BeforeComma(std::string_view text) {
    return text.substr(0, text.find(','));
}

std::int32_t ParseAddress(std::string_view text) {
    if (!IsNumericText(text, false)) {
        return kInvalidAddress;
    }
    const std::int32_t address = NumericValue(text);
    return IsRelayAddress(address) ? address : kInvalidAddress;
}

bool IsIpPart(std::string_view text) {
    return IsNumericText(text, false) && NumericValue(text) <= kLargestIpPart;
}

} // namespace

std::string ParseEthernetIp(std::string_view entry) {
    const std::string_view ip = BeforeComma(entry);
    return ip.size() < kShortestIp ? "-1" : std::string(ip);
}

bool IsValidIpAddress(std::string_view text) {
    if (text.size() < kShortestIp) {
        return false;
    }
    std::size_t parts = 1;
    std::size_t dot = 0;
    while ((dot = text.find('.')) != std::string_view::npos) {
        if (!IsIpPart(text.substr(0, dot))) {
            return false;
        }
        text.remove_prefix(dot + 1);
        ++parts;
    }
    return parts == kIpPartCount && IsIpPart(text);
}

std::int32_t ParseEthernetDeviceAddress(std::string_view entry) {
    const auto device = BehindComma(entry);
    return device ? ParseAddress(BeforeComma(*device)) : kInvalidAddress;
}

std::int32_t ParseEthernetBusAddress(std::string_view entry) {
    const auto device = BehindComma(entry);
    const auto bus = device ? BehindComma(*device) : std::nullopt;
    return !bus || bus->empty() ? 0 : ParseAddress(*bus);
}

} // namespace ruvo
