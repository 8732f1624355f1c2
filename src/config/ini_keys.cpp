#include "config/ini_keys.h"

#include "config/configuration.h"
#include "config/ethernet_entry.h"
#include "paths/path_utilities.h"
#include "platform/ini_text.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::int32_t kLargestTiming = 65535;

bool IsBaudRate(std::int32_t value) {
    const std::string wanted = std::to_string(value);
    std::string_view rest = kBaudRates;
    while (rest.substr(0, rest.find('|')) != wanted) {
        if (rest.find('|') == std::string_view::npos) {
            return false;
        }
        rest.remove_prefix(rest.find('|') + 1);
    }
    return true;
}

/// "1200, 2400 or 4800".
std::string InWords(std::string_view choices) {
    std::string words(choices);
    words.replace(words.rfind('|'), 1, " or ");
    for (std::size_t at = 0; (at = words.find('|', at)) != std::string::npos;) {
        words.replace(at, 1, ", ");
    }
    return words;
}

bool IsInRange(EKeyRule rule, std::int32_t value) {
    switch (rule) {
    case EKeyRule::Switch:
        return value == 0 || value == 1;
    case EKeyRule::Timing:
        return value >= 0 && value <= kLargestTiming;
    case EKeyRule::BaudRate:
        return IsBaudRate(value);
    default:
        return true;
    }
}

/// Looks at what is below the drive: the root of a drive receives no events.
bool IsEventRoot(const std::string& path) {
    const SPathParts parts = SplitPath(path);
    const std::string belowDrive = parts.folder + parts.name + parts.extension;
    return !belowDrive.empty() && !HasForbiddenCharacter(belowDrive);
}

bool AcceptsAddress(std::string_view text) {
    return IsNumericText(text, false) && IsRelayAddress(NumericValue(text));
}
bool AcceptsIp(std::string_view text) {
    return IsValidIpAddress(ParseEthernetIp(text));
}
bool AcceptsDevice(std::string_view text) {
    return ParseEthernetDeviceAddress(text) != kInvalidAddress;
}
bool AcceptsBus(std::string_view text) {
    return ParseEthernetBusAddress(text) != kInvalidAddress;
}

constexpr std::string_view kAddressExpected = "a device address from 1 to 254";
constexpr std::array kSerialRules{
    SEntryRule{AcceptsAddress, EResultCode::SerialAddressInvalid, kAddressExpected}};
constexpr std::array kModemRules{
    SEntryRule{AcceptsAddress, EResultCode::ModemAddressInvalid, kAddressExpected}};
constexpr std::array kEthernetRules{
    SEntryRule{
        AcceptsIp, EResultCode::EthernetIpInvalid,
        "IP,device or IP,device,bus, for example 192.168.1.10,12,1: four numbers from 0 to 255 separated by dots, "
        "then addresses from 1 to 254, without blanks"},
    SEntryRule{AcceptsDevice, EResultCode::EthernetDeviceInvalid,
               "a device address from 1 to 254 after the first comma"},
    SEntryRule{AcceptsBus, EResultCode::EthernetBusInvalid,
               "nothing or a bus address from 1 to 254 after the second comma"},
};

} // namespace

const SGeneralKey* FindGeneralKey(std::string_view name) {
    const auto* const key = std::ranges::find_if(
        kGeneralKeys, [&](const SGeneralKey& row) { return EqualIniNames(row.name, name); });
    return key == kGeneralKeys.end() ? nullptr : key;
}

std::int32_t NotANumberValue(EKeyRule rule) {
    switch (rule) { // each outside the range of its rule
    case EKeyRule::Switch:
        return 2;
    case EKeyRule::Timing:
        return 70000;
    default: // no baud rate; the line of a modem is taken as it is
        return 0;
    }
}

bool IsAccepted(const SGeneralKey& key, const SRuvoConfigFields& fields) {
    if (const auto* const number = std::get_if<IntegerField>(&key.field)) {
        return IsInRange(key.rule, fields.**number);
    }
    const std::string& text = fields.*std::get<TextField>(key.field);
    return key.rule == EKeyRule::EventRoot ? IsEventRoot(text)
                                           : key.rule != EKeyRule::ModemName || !text.empty();
}

std::string Expectation(EKeyRule rule) {
    switch (rule) {
    case EKeyRule::AnyText:
        return {};
    case EKeyRule::AnyNumber:
        return "a number";
    case EKeyRule::EventRoot:
        return "a folder below the drive that can be created and written, without * ? \" < > |; a relative path is resolved "
               "against the program's folder";
    case EKeyRule::ErrorLog:
        return "a file that can be created or written (default: " + std::string(kErrorLogName) +
               " in the event root)";
    case EKeyRule::ModemName:
        return "the name of a TAPI modem";
    case EKeyRule::Switch:
        return "0 or 1";
    case EKeyRule::Timing:
        return "a number from 0 to " + std::to_string(kLargestTiming);
    case EKeyRule::BaudRate:
        return InWords(kBaudRates);
    }
    return {};
}

ELink SelectedLink(const CRuvoConfig& config) {
    if (config.UseEthernet() == 1) {
        return ELink::Ethernet; // UseModem is not looked at
    }
    return config.UseModem() == 1 ? ELink::Modem : ELink::Serial;
}

std::span<const SEntryRule> EntryRules(ELink link) {
    static constexpr std::array<std::span<const SEntryRule>, kLinks.size()> kRules{kSerialRules, kModemRules,
                                                                                   kEthernetRules};
    return kRules[static_cast<std::size_t>(link)];
}

bool IsEntry(ELink link, std::string_view text) {
    return link == ELink::Ethernet ? !text.empty() : IsNumericText(text, false);
}

} // namespace ruvo
