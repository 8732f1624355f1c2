// What loading passes over in silence.
#include "config/configuration.h"
#include "platform/ini_text.h"
#include "tools/ini/ini_findings.h"
#include "tools/ini/ini_forms.h"
#include "tools/ini/relay_entries.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>

namespace ruvo {

namespace {

using Findings = std::vector<SIniFinding>;

constexpr std::array kGeneralKeys{
    std::string_view("EventRootDir"),      std::string_view("ErrorLogPathname"),
    std::string_view("UseEthernet"),       std::string_view("CommPort"),
    std::string_view("BaudRate"),          std::string_view("ElevenBits"),
    std::string_view("BusyHoldoff"),       std::string_view("BusyCount"),
    std::string_view("ResetResponse"),     std::string_view("Response"),
    std::string_view("TryCount"),          std::string_view("TransmitDelay"),
    std::string_view("GlobalTransmit"),    std::string_view("UseModem"),
    std::string_view("TAPI_ModemName"),    std::string_view("TAPI_LineAddress"),
    std::string_view("TAPI_NumberToDial"), std::string_view("TAPI_UseCountryAndAreaCodes"),
    std::string_view("TAPI_AreaCode"),     std::string_view("TAPI_CountryCode"),
};
constexpr std::array kDeviceSections{kSerialSection, kModemSection, kEthernetSection};
constexpr std::string_view kOwnPrefix = "RUVO_";

bool IsKnownGeneralKey(std::string_view key) {
    return std::ranges::any_of(kGeneralKeys,
                               [key](std::string_view known) { return EqualIniNames(known, key); });
}

bool IsDeviceSection(std::string_view name) {
    return std::ranges::any_of(kDeviceSections,
                               [name](std::string_view known) { return EqualIniNames(known, name); });
}

bool IsRelaySection(std::string_view name) {
    return IsDeviceSection(name) || EqualIniNames(name, kPasswordsSection);
}

bool HasDeviceEntry(const CIniText& ini, std::string_view key) {
    return std::ranges::any_of(
        kDeviceSections, [&](std::string_view section) { return ini.FindEntry(section, key) != nullptr; });
}

bool IsLogNamedAsIni(const SIniSection& section, const SIniEntry& entry) {
    constexpr std::string_view kExtension = ".ini";
    if (!EqualIniNames(section.name, kGeneralSection) || !EqualIniNames(entry.key, "ErrorLogPathname")) {
        return false;
    }
    const std::string_view path = entry.value ? std::string_view(*entry.value) : std::string_view();
    return path.size() >= kExtension.size() &&
           EqualIniNames(path.substr(path.size() - kExtension.size()), kExtension);
}

/// What is odd about a key that is read; none for one that is fine. The text of a password is never told.
std::optional<std::string> OddEntry(const CIniText& ini, const SIniSection& section, const SIniEntry& entry) {
    if (entry.key.starts_with('[')) {
        return std::nullopt; // told as what it is
    }
    if (IsLogNamedAsIni(section, entry)) {
        return "ErrorLogPathname: an INI file, to which the error log would be written; want another name";
    }
    if (EqualIniNames(section.name, kGeneralSection)) {
        return IsKnownGeneralKey(entry.key)
                   ? std::nullopt
                   : std::optional(entry.key + ": no key of [RUVO_GENERAL], not read");
    }
    if (!IsRelayKey(entry.key)) {
        return entry.key + ": not read; want RV and three digits";
    }
    if (EqualIniNames(section.name, kEthernetSection)) {
        return std::nullopt;
    }
    if (IsDeviceSection(section.name)) {
        return entry.value && IsNumericText(*entry.value, false)
                   ? std::nullopt
                   : std::optional(entry.key + ": passed over; want a device address from 1 to 254");
    }
    if (!entry.value || entry.value->empty()) {
        return std::nullopt; // no password: none is used
    }
    if (!CanBeScrambled(*entry.value)) {
        return entry.key + ": no scrambled password; want the 22 characters that scrambling gives";
    }
    return HasDeviceEntry(ini, entry.key)
               ? std::nullopt
               : std::optional(entry.key + ": a password for a relay that no section lists");
}

/// The lines below it then count for the section before, or for none.
void CheckHeaders(const SIniSection& section, Findings& findings) {
    for (const SIniEntry& entry : section.entries) {
        if (entry.key.starts_with('[')) {
            findings.push_back({entry.line, entry.key + ": begins no section; want a \"]\" at its end"});
        }
    }
}

/// A relay that two keys name is visited twice; the second key's password may be another one.
void CheckAddresses(const CIniText& ini, const SIniSection& section, Findings& findings) {
    std::map<RelayAddress, const SIniEntry*> seen;
    for (std::size_t link = 0; link < kLinks.size(); ++link) {
        if (!EqualIniNames(section.name, kLinks[link].section)) {
            continue;
        }
        for (const SIniEntry& entry : section.entries) {
            const auto kind = static_cast<ELink>(link);
            if (!IsRelayKey(entry.key) || !HasValue(&entry) || !WantInstead(kind, *entry.value).empty() ||
                ini.FindEntry(section.name, entry.key) != &entry) {
                continue;
            }
            const auto [first, isNew] = seen.try_emplace(AddressOf(kind, *entry.value), &entry);
            if (!isNew) {
                findings.push_back({entry.line, entry.key + ": the address of " + first->second->key +
                                                    " in line " + std::to_string(first->second->line) +
                                                    "; the relay is visited twice"});
            }
        }
    }
}

void CheckEntries(const CIniText& ini, const SIniSection& section, Findings& findings) {
    for (const SIniEntry& entry : section.entries) {
        if (entry.IsComment()) {
            continue;
        }
        if (auto text = OddEntry(ini, section, entry)) {
            findings.push_back({entry.line, std::move(*text)});
        }
    }
}

} // namespace

std::vector<SIniFinding> FindOddities(const CIniText& ini) {
    Findings findings;
    for (const SIniSection& section : ini.Sections()) {
        const bool isKnown = EqualIniNames(section.name, kGeneralSection) || IsRelaySection(section.name);
        const std::string shown = "[" + section.name + "]";
        CheckHeaders(section, findings);
        if (isKnown && ini.FindSection(section.name) != &section) {
            findings.push_back({section.line, shown + ": a second section of this name is never read"});
        } else if (isKnown) {
            CheckEntries(ini, section, findings);
            CheckAddresses(ini, section, findings);
        } else if (EqualIniNames(std::string_view(section.name).substr(0, kOwnPrefix.size()), kOwnPrefix)) {
            findings.push_back({section.line, shown + ": a section of this name is not read"});
        }
    }
    std::ranges::stable_sort(findings, {}, &SIniFinding::line);
    return findings;
}

} // namespace ruvo
