// What loading passes over in silence.
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

/// An entry that loading passes over. (An empty one of Ethernet is meant so.)
std::optional<std::string> RelayWarning(ELink link, const SIniEntry& entry) {
    const std::string text = entry.value.value_or("");
    if (IsEntry(link, text) || link == ELink::Ethernet) {
        return std::nullopt;
    }
    return entry.key + ": passed over; " + WantInstead(link, text);
}

/// What is odd about a key that is read; none for one that is fine. The text of a password is never told.
std::optional<std::string> EntryWarning(const CIniText& ini, const SIniSection& section,
                                        const SIniEntry& entry) {
    if (entry.key.starts_with('[')) {
        return std::nullopt; // told as what it is
    }
    if (IsLogNamedAsIni(section, entry)) {
        return std::string(GeneralKey("ErrorLogPathname").name) +
               ": an INI file, to which the error log would be written; want another name";
    }
    if (EqualIniNames(section.name, kGeneralSection)) {
        return FindGeneralKey(entry.key) != nullptr
                   ? std::nullopt
                   : std::optional(entry.key + ": no key of [RUVO_GENERAL], not read");
    }
    if (!IsRelayKey(entry.key)) {
        return entry.key + ": not read; want RV and three digits";
    }
    if (const SLinkRow* const link = LinkOfSection(section.name)) {
        return RelayWarning(static_cast<ELink>(link - kLinks.data()), entry);
    }
    if (!entry.value || entry.value->empty()) {
        return std::nullopt; // no password: none is used
    }
    if (!IsScrambledText(*entry.value)) {
        return entry.key + ": no scrambled password; want the 22 characters that scrambling gives";
    }
    return HasDeviceEntry(ini, entry.key)
               ? std::nullopt
               : std::optional(entry.key + ": a password for a relay that no section lists");
}

/// The lines below it then count for the section before, or for none.
void CheckHeaders(const SIniSection& section, Diagnostics& diagnostics) {
    for (const SIniEntry& entry : section.entries) {
        if (entry.key.starts_with('[')) {
            diagnostics.push_back({entry.line, entry.key + ": begins no section; want a \"]\" at its end"});
        }
    }
}

/// A relay that two keys name is visited twice; the second key's password may be another one.
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
                diagnostics.push_back({entry.line, entry.key + ": the address of " + first->second->key +
                                                       " in line " + std::to_string(first->second->line) +
                                                       "; the relay is visited twice"});
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
            diagnostics.push_back({section.line, shown + ": a second section of this name is never read"});
        } else if (isKnown) {
            CheckEntries(ini, section, diagnostics);
            CheckAddresses(ini, section, diagnostics);
        } else if (EqualIniNames(std::string_view(section.name).substr(0, kOwnPrefix.size()), kOwnPrefix)) {
            diagnostics.push_back({section.line, shown + ": a section of this name is not read"});
        }
    }
    std::ranges::stable_sort(diagnostics, {}, &SDiagnostic::line);
    return diagnostics;
}

} // namespace ruvo
