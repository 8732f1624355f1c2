#include "tools/ini/relay_entries.h"

#include "base/secret.h"
#include "base/text.h"
#include "config/configuration.h"
#include "config/ethernet_entry.h"
#include "config/scramble.h"

#include <algorithm>

namespace ruvo {

namespace {

// The choices are the names of the links.
static_assert([] {
    std::string_view rest = kLinkChoices;
    for (const SLinkRow& row : kLinks) {
        if (!rest.starts_with(row.name)) {
            return false;
        }
        rest.remove_prefix(std::min(row.name.size() + 1, rest.size()));
    }
    return rest.empty();
}());

/// A switch of the file.
std::string SwitchText(const CIniText& ini, const SGeneralKey& key) {
    const SIniEntry* const entry = ini.FindEntry(kGeneralSection, key.name);
    return HasValue(entry) ? *entry->value : std::string(key.defaultText);
}

bool StandsAnywhere(const CIniText& ini, std::string_view key) {
    const auto holds = [&](std::string_view section) { return !ini.FindAll(section, key).empty(); };
    return holds(kPasswordsSection) ||
           std::ranges::any_of(kLinks, [&](const SLinkRow& row) { return holds(row.section); });
}

} // namespace

bool HasValue(const SIniEntry* entry) {
    return entry != nullptr && entry->value && !entry->value->empty();
}

std::optional<ELink> LinkNamed(std::string_view name) {
    const auto* const row = std::ranges::find(kLinks, name, &SLinkRow::name);
    return row == kLinks.end() ? std::nullopt : std::optional(static_cast<ELink>(row - kLinks.begin()));
}

std::optional<ELink> SelectedLink(const CIniText& ini) {
    const std::string useEthernet = SwitchText(ini, GeneralKey("UseEthernet"));
    const std::string useModem =
        useEthernet == "1" ? "0" : SwitchText(ini, GeneralKey("UseModem")); // ignored then
    const auto* const row = std::ranges::find_if(kLinks, [&](const SLinkRow& link) {
        return link.useEthernet == useEthernet && link.useModem == useModem;
    });
    return row == kLinks.end() ? std::nullopt : std::optional(static_cast<ELink>(row - kLinks.begin()));
}

std::vector<SRelay> ListRelays(const CIniText& ini) {
    std::vector<SRelay> relays;
    for (std::size_t link = 0; link < kLinks.size(); ++link) {
        for (const std::string& key : RelayKeys(ini.KeyNames(kLinks[link].section))) {
            const SIniEntry* const entry = ini.FindEntry(kLinks[link].section, key);
            if (HasValue(entry)) {
                relays.push_back({static_cast<ELink>(link), key, *entry->value, PasswordOf(ini, key)});
            }
        }
    }
    return relays;
}

EStoredPassword PasswordOf(const CIniText& ini, std::string_view key) {
    const SIniEntry* const entry = ini.FindEntry(kPasswordsSection, key);
    if (!HasValue(entry)) {
        return EStoredPassword::None;
    }
    CSecret plain(kMaxPasswordLength, '\0');
    if (UnscramblePassword(entry->value->c_str(), plain.Data()) != 0) {
        return EStoredPassword::Unusable;
    }
    return *plain.Text() == '\0' ? EStoredPassword::None : EStoredPassword::Stored;
}

std::string WantInstead(ELink link, std::string_view text) {
    const auto rules = EntryRules(link);
    const auto broken =
        std::ranges::find_if(rules, [&](const SEntryRule& rule) { return !rule.accepts(text); });
    return broken == rules.end() ? std::string() : "expected " + std::string(broken->expected);
}

RelayAddress AddressOf(ELink link, std::string_view text) {
    if (link != ELink::Ethernet) {
        return {"", IsNumericText(text, false) ? NumericValue(text) : kInvalidAddress, 0};
    }
    return {ParseEthernetIp(text), ParseEthernetDeviceAddress(text), ParseEthernetBusAddress(text)};
}

std::string KeyWithAddress(const CIniText& ini, ELink link, std::string_view text) {
    for (const SRelay& relay : ListRelays(ini)) {
        if (relay.link == link && AddressOf(link, relay.text) == AddressOf(link, text)) {
            return relay.key;
        }
    }
    return {};
}

std::optional<std::string> FreeKey(const CIniText& ini) {
    std::optional<std::string> lowest;
    std::optional<std::string> behindLast = RelayKey(1); // users count from one
    for (int number = 0; number < kRelayKeyCount; ++number) {
        const std::string key = RelayKey(number);
        if (StandsAnywhere(ini, key)) {
            behindLast = number + 1 < kRelayKeyCount ? std::optional(RelayKey(number + 1)) : std::nullopt;
        } else if (!lowest) {
            lowest = key;
        }
    }
    return behindLast ? behindLast : lowest;
}

std::string WhyNotAdded(const CIniText& ini, ELink link, const std::string& key, const std::string& address) {
    const std::string_view section = LinkRow(link).section;
    if (const std::string want = WantInstead(link, address); !want.empty()) {
        return "not a valid address for " + Bracketed(section) + ": " + want;
    }
    if (const std::string other = KeyWithAddress(ini, link, address); !other.empty()) {
        return other + " has this address; use another one, or remove " + other + " first";
    }
    if (key.empty()) {
        return "all keys from RV000 to RV999 are in use; remove a relay first, or create another INI file";
    }
    return HasValue(ini.FindEntry(section, key))
               ? key + " is in use; use another key, or omit it to get a free one"
               : std::string();
}

std::string Bracketed(std::string_view section) {
    return "[" + std::string(section) + "]";
}

std::string UpperKey(std::string_view key) {
    return ToUpperText(key);
}

} // namespace ruvo
