// Result codes and the lines behind them.
#include "tools/ini/ini_findings.h"

#include "config/configuration.h"
#include "config/ethernet_entry.h"
#include "config/validation.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace ruvo {

namespace {

/// How the lines of a cause are found.
enum class ECause : std::uint8_t {
    Elsewhere,    ///< not in the file's lines
    Key,          ///< one key
    EmptySection, ///< a section without a usable entry
    Entries,      ///< every relay entry that the row's test refuses
    Duplicates,   ///< relay keys that stand more than once
    EventRoot,    ///< the key of the event root, which can be wrong in three ways
};

using Accepts = bool (*)(std::string_view text);

struct SCauseRow {
    EResultCode code;
    ECause cause;
    std::string_view section;
    std::string_view key; ///< of a Key row
    std::string_view want;
    Accepts accepts = nullptr; ///< of an Entries row
};

// An address that is no number is no entry at all, so it is not what the rule refused.
bool AcceptsAddress(std::string_view text) {
    return !IsNumericText(text, false) || IsRelayAddress(NumericValue(text));
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

constexpr std::string_view kWantSwitch = "want 0 or 1";
constexpr std::string_view kWantWord = "want a number from 0 to 65535";
constexpr std::string_view kWantAddress = "want a device address from 1 to 254";
constexpr std::string_view kWantEntry = "want entries such as RV001=5, a device address from 1 to 254";
constexpr std::string_view kWantOnce = "want each key once";

constexpr std::array kCauses{
    SCauseRow{EResultCode::IniFileNotOpened, ECause::Elsewhere, "", "",
              "want a file that can be read and holds at least one section"},
    SCauseRow{EResultCode::LogFileNotWritable, ECause::Key, kGeneralSection, "ErrorLogPathname",
              "want a file that can be made or written (without the key: RUVO_Errors.log in the event root)"},
    SCauseRow{EResultCode::CommsServerFailed, ECause::Elsewhere, "", "",
              "want the comms server P32LS, registered or beside the program"},
    SCauseRow{EResultCode::BaudRateInvalid, ECause::Key, kGeneralSection, "BaudRate",
              "want 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200"},
    SCauseRow{EResultCode::ElevenBitsInvalid, ECause::Key, kGeneralSection, "ElevenBits", kWantSwitch},
    SCauseRow{EResultCode::BusyHoldoffInvalid, ECause::Key, kGeneralSection, "BusyHoldoff", kWantWord},
    SCauseRow{EResultCode::BusyCountInvalid, ECause::Key, kGeneralSection, "BusyCount", kWantWord},
    SCauseRow{EResultCode::ResetResponseInvalid, ECause::Key, kGeneralSection, "ResetResponse", kWantWord},
    SCauseRow{EResultCode::ResponseInvalid, ECause::Key, kGeneralSection, "Response", kWantWord},
    SCauseRow{EResultCode::TryCountInvalid, ECause::Key, kGeneralSection, "TryCount", kWantWord},
    SCauseRow{EResultCode::TransmitDelayInvalid, ECause::Key, kGeneralSection, "TransmitDelay", kWantWord},
    SCauseRow{EResultCode::GlobalTransmitInvalid, ECause::Key, kGeneralSection, "GlobalTransmit", kWantWord},
    SCauseRow{EResultCode::UseModemInvalid, ECause::Key, kGeneralSection, "UseModem", kWantSwitch},
    SCauseRow{EResultCode::UseCountryAndAreaCodesInvalid, ECause::Key, kGeneralSection,
              "TAPI_UseCountryAndAreaCodes", kWantSwitch},
    SCauseRow{EResultCode::UseEthernetInvalid, ECause::Key, kGeneralSection, "UseEthernet", kWantSwitch},
    SCauseRow{EResultCode::EthernetSectionEmpty, ECause::EmptySection, kEthernetSection, "",
              "want entries such as RV001=192.168.1.10,12 or RV001=192.168.1.10,12,1 (IP, device, bus)"},
    SCauseRow{EResultCode::SerialSectionEmpty, ECause::EmptySection, kSerialSection, "", kWantEntry},
    SCauseRow{EResultCode::SerialAddressInvalid, ECause::Entries, kSerialSection, "", kWantAddress,
              AcceptsAddress},
    SCauseRow{EResultCode::EventRootInvalid, ECause::EventRoot, kGeneralSection, "EventRootDir", ""},
    SCauseRow{EResultCode::RegistryDestinationInvalid, ECause::Elsewhere, "", "",
              "the registry value Q7SecurityLogs names the folder for events; want one that can be written"},
    SCauseRow{EResultCode::EthernetIpInvalid, ECause::Entries, kEthernetSection, "",
              "want an IP address first: four numbers from 0 to 255 with dots between", AcceptsIp},
    SCauseRow{EResultCode::EthernetBusInvalid, ECause::Entries, kEthernetSection, "",
              "want nothing or a bus address from 1 to 254 behind the second comma", AcceptsBus},
    SCauseRow{EResultCode::EthernetDeviceInvalid, ECause::Entries, kEthernetSection, "",
              "want a device address from 1 to 254 behind the first comma", AcceptsDevice},
    SCauseRow{EResultCode::ModemSectionEmpty, ECause::EmptySection, kModemSection, "", kWantEntry},
    SCauseRow{EResultCode::ModemAddressInvalid, ECause::Entries, kModemSection, "", kWantAddress,
              AcceptsAddress},
    SCauseRow{EResultCode::ModemNameMissing, ECause::Key, kGeneralSection, "TAPI_ModemName",
              "want the name of a telephony modem"},
    SCauseRow{EResultCode::EthernetDuplicate, ECause::Duplicates, kEthernetSection, "", kWantOnce},
    SCauseRow{EResultCode::SerialDuplicate, ECause::Duplicates, kSerialSection, "", kWantOnce},
    SCauseRow{EResultCode::ModemDuplicate, ECause::Duplicates, kModemSection, "", kWantOnce},
    SCauseRow{EResultCode::PasswordsDuplicate, ECause::Duplicates, kPasswordsSection, "", kWantOnce},
};

using Findings = std::vector<SIniFinding>;

std::string Bracketed(std::string_view section) {
    std::string text = "[";
    text += section;
    text += ']';
    return text;
}

/// "KEY=TEXT: want ..."; a scrambled password stays where it is.
SIniFinding EntryFinding(const SIniEntry& entry, std::string_view section, std::string_view want) {
    const bool isSecret = EqualIniNames(section, kPasswordsSection);
    const std::string text = isSecret ? "..." : entry.value.value_or("");
    return {entry.line, entry.key + (entry.value ? "=" + text : "") + ": " + std::string(want)};
}

/// For what is not there: the section that it is missing from, or the file when that is missing too.
SIniFinding MissingFinding(const CIniText& ini, const SCauseRow& row) {
    const SIniSection* const section = ini.FindSection(row.section);
    const std::string what = row.key.empty() ? "no entry" : "no key " + std::string(row.key);
    const std::string place = section != nullptr ? " in " : ", nor a section ";
    return {section != nullptr ? section->line : 0,
            what + place + Bracketed(row.section) + ": " + std::string(row.want)};
}

void FindKey(const CIniText& ini, const SCauseRow& row, Findings& findings) {
    const SIniEntry* const entry = ini.FindEntry(row.section, row.key);
    findings.push_back(entry != nullptr ? EntryFinding(*entry, row.section, row.want)
                                        : MissingFinding(ini, row));
}

/// Which of the things that may be wrong with an event root is. Separators of either kind are understood, so
/// only what is still there in the full path is at fault.
std::string_view WantEventRoot(const std::string& given) {
    std::string root = FullPath(given.empty() ? "." : given);
    StripTrailingSeparators(root);
    const SPathParts parts = SplitPath(root);
    const std::string behindDrive = parts.folder + parts.name + parts.extension;
    if (!root.empty() && behindDrive.empty()) {
        return "want a folder below the drive, not the drive alone";
    }
    return HasForbiddenCharacter(behindDrive) ? "want a folder without * ? \" < > |"
                                              : "want a folder that can be made and written";
}

void FindEventRoot(const CIniText& ini, const SCauseRow& row, Findings& findings) {
    const SIniEntry* const entry = ini.FindEntry(row.section, row.key);
    SCauseRow explained = row;
    explained.want = WantEventRoot(entry != nullptr ? entry->value.value_or("") : "");
    FindKey(ini, explained, findings);
}

/// Calls `take` with the occurrence that is read of each relay key there is, in key order.
template <class TTake>
void ForEachRelayEntry(const CIniText& ini, std::string_view section, const TTake& take) {
    for (const std::string& key : RelayKeys(ini.KeyNames(section))) {
        if (const SIniEntry* const entry = ini.FindEntry(section, key)) {
            take(*entry, key);
        }
    }
}

void FindEmptySection(const CIniText& ini, const SCauseRow& row, Findings& findings) {
    ForEachRelayEntry(ini, row.section, [&](const SIniEntry& entry, const std::string& /*key*/) {
        findings.push_back(EntryFinding(entry, row.section, row.want));
    });
    if (findings.empty()) {
        findings.push_back(MissingFinding(ini, row));
    }
}

void FindEntries(const CIniText& ini, const SCauseRow& row, Findings& findings) {
    ForEachRelayEntry(ini, row.section, [&](const SIniEntry& entry, const std::string& /*key*/) {
        if (entry.value && !entry.value->empty() && !row.accepts(*entry.value)) {
            findings.push_back(EntryFinding(entry, row.section, row.want));
        }
    });
}

void FindDuplicates(const CIniText& ini, const SCauseRow& row, Findings& findings) {
    ForEachRelayEntry(ini, row.section, [&](const SIniEntry& first, const std::string& key) {
        if (HasDuplicateKey(&ini, row.section, key) != EDuplicateKey::Yes) {
            return;
        }
        const std::vector<const SIniEntry*> all = ini.FindAll(row.section, key);
        const SIniEntry& second = *all[1];
        const auto also = [&row](const SIniEntry& other) {
            return "also in line " + std::to_string(other.line) + "; " + std::string(row.want);
        };
        findings.push_back(EntryFinding(first, row.section, also(second)));
        findings.push_back(EntryFinding(second, row.section, also(first)));
    });
}

void FindElsewhere(const CIniText& /*ini*/, const SCauseRow& row, Findings& findings) {
    findings.push_back({0, std::string(row.want)});
}

} // namespace

std::vector<SIniFinding> FindCauses(EResultCode code, const CIniText& ini) {
    // In the order of ECause.
    static constexpr std::array kFinders{FindElsewhere, FindKey,        FindEmptySection,
                                         FindEntries,   FindDuplicates, FindEventRoot};
    Findings findings;
    const auto* const row = std::ranges::find(kCauses, code, &SCauseRow::code);
    if (row != kCauses.end()) {
        kFinders.at(static_cast<std::size_t>(row->cause))(ini, *row, findings);
    }
    return findings;
}

} // namespace ruvo
