// Warns of what loading silently ignores.
#include "config/configuration.h"
#include "config/scramble.h"
#include "platform/ini_text.h"
#include "tools/ini/diagnostics.h"
#include "tools/ini/relay_entries.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>

namespace ruvo {

namespace {

using Diagnostics = std::vector<SDiagnostic>;

constexpr std::string_view kOwnPrefix = "RUVO_";

/// The link whose relays the section lists; null for another section.
const SLinkRow* LinkOfSection(std::string_view name) {
    const auto* const row = std::ranges::find_if(
        kLinks, [name](const SLinkRow& link) { return EqualIniNames(link.section, name); });
    return row == kLinks.end() ? nullptr : row;
}

bool IsRelaySection(std::string_view name) {
    return LinkOfSection(name) != nullptr || EqualIniNames(name, kPasswordsSection);
}

bool HasDeviceEntry(const CIniText& ini, std::string_view key) {
    return std::ranges::any_of(
        kLinks, [&](const SLinkRow& link) { return ini.FindEntry(link.section, key) != nullptr; });
}

bool IsLogNamedAsIni(const SIniSection& section, const SIniEntry& entry) {
    constexpr std::string_view kExtension = ".ini";
    if (!EqualIniNames(section.name, kGeneralSection) ||
        FindGeneralKey(entry.key) != &GeneralKey("ErrorLogPathname")) {
        return false;
    }
    const std::string_view path = entry.value ? std::string_view(*entry.value) : std::string_view();
    return path.size() >= kExtension.size() &&
           EqualIniNames(path.substr(path.size() - kExtension.size()), kExtension);
}

/// An entry that loading ignores. (An empty entry of Ethernet is intentional.)
std::optional<std::string> RelayWarning(ELink link, const SIniEntry& entry) {
    const std::string text = entry.value.value_or("");
    if (IsEntry(link, text) || link == ELink::Ethernet) {
        return std::nullopt;
    }
    return entry.key + ": ignored; " + WantInstead(link, text);
}

/// A warning about an entry; none if it is fine. A password is never shown.
std::optional<std::string> EntryWarning(const CIniText& ini, const SIniSection& section,
                                        const SIniEntry& entry) {
    if (entry.key.starts_with('[')) {
        return std::nullopt; // reported by CheckHeaders
    }
    if (IsLogNamedAsIni(section, entry)) {
        return std::string(GeneralKey("ErrorLogPathname").name) +
               ": names an INI file, which the error log would overwrite; use another name";
    }
    if (EqualIniNames(section.name, kGeneralSection)) {
        return FindGeneralKey(entry.key) != nullptr
                   ? std::nullopt
                   : std::optional(entry.key + ": unknown key in [RUVO_GENERAL], ignored");
    }
    if (!IsRelayKey(entry.key)) {
        return entry.key + ": ignored; expected a key of RV and three digits";
    }
    if (const SLinkRow* const link = LinkOfSection(section.name)) {
        return RelayWarning(static_cast<ELink>(link - kLinks.data()), entry);
    }
    if (!entry.value || entry.value->empty()) {
        return std::nullopt; // no password: none is used
    }
    if (!IsScrambledText(*entry.value)) {
        return entry.key +
               ": not a scrambled password; expected the 22 characters that \"ruvoctl password encrypt\" prints";
    }
    return HasDeviceEntry(ini, entry.key)
               ? std::nullopt
               : std::optional(entry.key + ": password for a relay that no section lists");
}

/// The lines after such a line belong to the section before it, or to none.
void CheckHeaders(const SIniSection& section, Diagnostics& diagnostics) {
    for (const SIniEntry& entry : section.entries) {
        if (entry.key.starts_with('[')) {
            diagnostics.push_back(
                {entry.line, entry.key + ": not a section header; expected \"]\" at the end"});
        }
    }
}

/// A relay with two keys is visited twice, the second time perhaps with another password.
void CheckAddresses(const CIniText& ini, const SIniSection& section, Diagnostics& diagnostics) {
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
                diagnostics.push_back({entry.line, entry.key + ": same address as " + first->second->key +
                                                       " on line " + std::to_string(first->second->line) +
                                                       "; the relay would be visited twice"});
            }
        }
    }
}

void CheckEntries(const CIniText& ini, const SIniSection& section, Diagnostics& diagnostics) {
    for (const SIniEntry& entry : section.entries) {
        if (entry.IsComment()) {
            continue;
        }
        if (auto text = EntryWarning(ini, section, entry)) {
            diagnostics.push_back({entry.line, std::move(*text)});
        }
    }
}

} // namespace

std::vector<SDiagnostic> FindWarnings(const CIniText& ini) {
    Diagnostics diagnostics;
    for (const SIniSection& section : ini.Sections()) {
        const bool isKnown = EqualIniNames(section.name, kGeneralSection) || IsRelaySection(section.name);
        const std::string shown = "[" + section.name + "]";
        CheckHeaders(section, diagnostics);
        if (isKnown && ini.FindSection(section.name) != &section) {
            diagnostics.push_back({section.line, shown + ": second section of this name, ignored"});
        } else if (isKnown) {
            CheckEntries(ini, section, diagnostics);
            CheckAddresses(ini, section, diagnostics);
        } else if (EqualIniNames(std::string_view(section.name).substr(0, kOwnPrefix.size()), kOwnPrefix)) {
            diagnostics.push_back({section.line, shown + ": unknown section, ignored"});
        }
    }
    std::ranges::stable_sort(diagnostics, {}, &SDiagnostic::line);
    return diagnostics;
}

} // namespace ruvo
