#include "config/validation.h"

#include "config/configuration.h"
#include "config/ethernet_entry.h"
#include "paths/path_utilities.h"
#include "platform/ini_text.h"
#include "platform/text_file.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ruvo {

namespace {

constexpr std::uint32_t kLargestTransactionValue = 65535;
constexpr std::string_view kNotFound = "NOT_FOUND";
constexpr std::array kBaudRates{1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};

struct STransactionRule {
    std::int32_t (CRuvoConfig::*value)() const;
    EResultCode code;
};

constexpr std::array kTransactionRules{
    STransactionRule{&CRuvoConfig::BusyHoldoff, EResultCode::BusyHoldoffInvalid},
    STransactionRule{&CRuvoConfig::BusyCount, EResultCode::BusyCountInvalid},
    STransactionRule{&CRuvoConfig::ResetResponse, EResultCode::ResetResponseInvalid},
    STransactionRule{&CRuvoConfig::Response, EResultCode::ResponseInvalid},
    STransactionRule{&CRuvoConfig::TryCount, EResultCode::TryCountInvalid},
    STransactionRule{&CRuvoConfig::TransmitDelay, EResultCode::TransmitDelayInvalid},
    STransactionRule{&CRuvoConfig::GlobalTransmit, EResultCode::GlobalTransmitInvalid},
};

/// The codes of a section of relays that are reached by a bare device address.
struct SAddressSectionRules {
    std::string_view section;
    EResultCode empty;
    EResultCode duplicate;
    EResultCode invalid;
};

constexpr SAddressSectionRules kSerialRules{kSerialSection, EResultCode::SerialSectionEmpty,
                                            EResultCode::SerialDuplicate, EResultCode::SerialAddressInvalid};
constexpr SAddressSectionRules kModemRules{kModemSection, EResultCode::ModemSectionEmpty,
                                           EResultCode::ModemDuplicate, EResultCode::ModemAddressInvalid};

bool IsSwitch(std::int32_t value) {
    return value == 0 || value == 1;
}

bool HasDuplicates(const CIniText* ini, std::string_view section) {
    if (ini == nullptr) {
        return false;
    }
    const std::set<std::string> keys = RelayKeys(ini->KeyNames(section));
    return std::any_of(keys.begin(), keys.end(), [&](const std::string& key) {
        return HasDuplicateKey(ini, section, key) == EDuplicateKey::Yes;
    });
}

EResultCode CheckEventRoot(const CRuvoConfig& config) {
    const SPathParts parts = SplitPath(config.EventRoot());
    const std::string behindDrive = parts.folder + parts.name + parts.extension;
    return behindDrive.empty() || HasForbiddenCharacter(behindDrive) ? EResultCode::EventRootInvalid
                                                                     : EResultCode::Success;
}

EResultCode CheckTransactionValues(const CRuvoConfig& config) {
    for (const STransactionRule& rule : kTransactionRules) {
        if (static_cast<std::uint32_t>((config.*rule.value)()) > kLargestTransactionValue) {
            return rule.code;
        }
    }
    return EResultCode::Success;
}

EResultCode CheckModem(const CRuvoConfig& config) {
    if (config.TapiModemName().empty()) {
        return EResultCode::ModemNameMissing;
    }
    return IsSwitch(config.TapiUseCountryAndAreaCodes()) ? EResultCode::Success
                                                         : EResultCode::UseCountryAndAreaCodesInvalid;
}

EResultCode CheckLink(const CRuvoConfig& config) {
    if (!IsSwitch(config.UseEthernet())) {
        return EResultCode::UseEthernetInvalid;
    }
    if (config.UseEthernet() == 1) {
        return EResultCode::Success;
    }
    if (std::find(kBaudRates.begin(), kBaudRates.end(), config.BaudRate()) == kBaudRates.end()) {
        return EResultCode::BaudRateInvalid;
    }
    if (!IsSwitch(config.ElevenBits())) {
        return EResultCode::ElevenBitsInvalid;
    }
    if (!IsSwitch(config.UseModem())) {
        return EResultCode::UseModemInvalid;
    }
    return config.UseModem() == 1 ? CheckModem(config) : EResultCode::Success;
}

EResultCode CheckEthernetEntry(const std::string& entry) {
    if (!IsValidIpAddress(ParseEthernetIp(entry))) {
        return EResultCode::EthernetIpInvalid;
    }
    if (ParseEthernetDeviceAddress(entry) == kInvalidAddress) {
        return EResultCode::EthernetDeviceInvalid;
    }
    return ParseEthernetBusAddress(entry) == kInvalidAddress ? EResultCode::EthernetBusInvalid
                                                             : EResultCode::Success;
}

EResultCode CheckEthernetSection(const TextEntries& entries, const CIniText* ini) {
    if (entries.empty()) {
        return EResultCode::EthernetSectionEmpty;
    }
    if (HasDuplicates(ini, kEthernetSection)) {
        return EResultCode::EthernetDuplicate;
    }
    for (const auto& [key, entry] : entries) {
        if (const EResultCode code = CheckEthernetEntry(entry); code != EResultCode::Success) {
            return code;
        }
    }
    return EResultCode::Success;
}

EResultCode CheckAddressSection(const AddressEntries& entries, const SAddressSectionRules& rules,
                                const CIniText* ini) {
    if (entries.empty()) {
        return rules.empty;
    }
    if (HasDuplicates(ini, rules.section)) {
        return rules.duplicate;
    }
    const bool allValid = std::all_of(entries.begin(), entries.end(),
                                      [](const auto& entry) { return IsRelayAddress(entry.second); });
    return allValid ? EResultCode::Success : rules.invalid;
}

// Only the section of the selected link counts; the other two may hold anything.
EResultCode CheckRelaySection(const CRuvoConfig& config, const CIniText* ini) {
    if (config.UseEthernet() == 1) {
        return CheckEthernetSection(config.EthernetEntries(), ini);
    }
    return config.UseModem() == 0 ? CheckAddressSection(config.SerialEntries(), kSerialRules, ini)
                                  : CheckAddressSection(config.ModemEntries(), kModemRules, ini);
}

std::optional<CIniText> ReadIniText(const std::string& path) {
    std::string text;
    return ReadTextFile(path, text) ? std::optional(CIniText::Parse(text)) : std::nullopt;
}

// True for an occurrence that the section holds and that reads as a value.
bool ReadsAsValue(const SIniSection& section, const SIniEntry& entry) {
    const SIniEntry* const begin = section.entries.data();
    const bool held = !std::less<>()(&entry, begin) && std::less<>()(&entry, begin + section.entries.size());
    return held && entry.value && *entry.value != kNotFound;
}

} // namespace

EResultCode ValidateConfiguration(const CRuvoConfig& config) {
    for (const auto check : {CheckEventRoot, CheckTransactionValues, CheckLink}) {
        if (const EResultCode code = check(config); code != EResultCode::Success) {
            return code;
        }
    }
    const std::optional<CIniText> text = ReadIniText(config.IniPath());
    const CIniText* const ini = text ? &*text : nullptr;
    if (const EResultCode code = CheckRelaySection(config, ini); code != EResultCode::Success) {
        return code;
    }
    return HasDuplicates(ini, kPasswordsSection) ? EResultCode::PasswordsDuplicate : EResultCode::Success;
}

EDuplicateKey HasDuplicateKey(const CIniText* ini, std::string_view section, std::string_view key) {
    if (ini == nullptr) {
        return EDuplicateKey::TextMissing;
    }
    const std::vector<const SIniEntry*> found = ini->FindAll(section, key);
    if (found.size() < 2) { // nearly every key: its section need not be looked for
        return EDuplicateKey::No;
    }
    const SIniSection& first = *ini->FindSection(section);
    const bool twice = ReadsAsValue(first, *found[0]) && ReadsAsValue(first, *found[1]);
    return twice ? EDuplicateKey::Yes : EDuplicateKey::No;
}

} // namespace ruvo
