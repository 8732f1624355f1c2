#include "config/validation.h"

#include "config/ini_keys.h"

#include <algorithm>
#include <string>

namespace ruvo {

namespace {

/// The order in which the kinds of rules are checked. Only the first refusal is reported, and callers depend
/// on which one that is; within a kind the order of kGeneralKeys holds.
enum class ETurn : std::uint8_t { EventRoot, Timing, Link };

ETurn TurnOf(EKeyRule rule) {
    switch (rule) {
    case EKeyRule::EventRoot:
        return ETurn::EventRoot;
    case EKeyRule::Timing:
        return ETurn::Timing;
    default:
        return ETurn::Link;
    }
}

bool IsInScope(ERuleScope scope, const CRuvoConfig& config) {
    switch (scope) {
    case ERuleScope::EveryLink:
        return true;
    case ERuleScope::SerialAndModem:
        return SelectedLink(config) != ELink::Ethernet;
    case ERuleScope::ModemOnly:
        return SelectedLink(config) == ELink::Modem;
    }
    return true;
}

EResultCode CheckGeneralKeys(const CRuvoConfig& config) {
    for (const ETurn turn : {ETurn::EventRoot, ETurn::Timing, ETurn::Link}) {
        for (const SGeneralKey& key : kGeneralKeys) {
            if (TurnOf(key.rule) == turn && IsInScope(key.scope, config) &&
                !IsAccepted(key, config.Fields())) {
                return key.refusal;
            }
        }
    }
    return EResultCode::Success;
}

EResultCode CheckEntry(ELink link, std::string_view text) {
    for (const SEntryRule& rule : EntryRules(link)) {
        if (!rule.accepts(text)) {
            return rule.refusal;
        }
    }
    return EResultCode::Success;
}

std::string EntryText(const std::string& entry) {
    return entry;
}
std::string EntryText(std::int32_t address) {
    return std::to_string(address);
}

template <class TEntries>
EResultCode CheckEntries(const CRuvoConfig& config, ELink link, const TEntries& entries) {
    const SLinkRow& row = LinkRow(link);
    // A repeated key is refused before its entries are: reading shows only the first of them.
    if (entries.empty()) {
        return row.empty;
    }
    if (config.HasDuplicates(row.section)) {
        return row.duplicate;
    }
    for (const auto& [key, entry] : entries) {
        if (const EResultCode code = CheckEntry(link, EntryText(entry)); code != EResultCode::Success) {
            return code;
        }
    }
    return EResultCode::Success;
}

// Only the section of the selected link counts; the other two may hold anything.
EResultCode CheckRelaySection(const CRuvoConfig& config) {
    switch (const ELink link = SelectedLink(config)) {
    case ELink::Serial:
        return CheckEntries(config, link, config.SerialEntries());
    case ELink::Modem:
        return CheckEntries(config, link, config.ModemEntries());
    case ELink::Ethernet:
        return CheckEntries(config, link, config.EthernetEntries());
    }
    return EResultCode::Success;
}

} // namespace

EResultCode ValidateConfiguration(const CRuvoConfig& config) {
    for (const auto check : {CheckGeneralKeys, CheckRelaySection}) {
        if (const EResultCode code = check(config); code != EResultCode::Success) {
            return code;
        }
    }
    return config.HasDuplicates(kPasswordsSection) ? EResultCode::PasswordsDuplicate : EResultCode::Success;
}

} // namespace ruvo
