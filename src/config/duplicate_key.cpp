#include "config/duplicate_key.h"

#include "config/configuration.h"
#include "platform/ini_text.h"

#include <algorithm>
#include <functional>
#include <set>
#include <string>

namespace ruvo {

namespace {

constexpr std::string_view kNotFound = "NOT_FOUND";

// True for an occurrence that the section holds and that reads as a value.
bool ReadsAsValue(const SIniSection& section, const SIniEntry& entry) {
    // std::less, because the entry may lie in another section's array, where "<" is undefined.
    const SIniEntry* const begin = section.entries.data();
    const bool held = !std::less<>()(&entry, begin) && std::less<>()(&entry, begin + section.entries.size());
    return held && entry.value && *entry.value != kNotFound;
}

bool HasDuplicates(const CIniText& ini, std::string_view section) {
    const std::set<std::string> keys = RelayKeys(ini.KeyNames(section));
    return std::ranges::any_of(keys, [&](const std::string& key) {
        return HasDuplicateKey(&ini, section, key) == EDuplicateKey::Yes;
    });
}

} // namespace

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

std::vector<std::string_view> SectionsWithDuplicates(const CIniText* ini) {
    std::vector<std::string_view> found;
    for (const std::string_view section :
         {kSerialSection, kModemSection, kEthernetSection, kPasswordsSection}) {
        if (ini != nullptr && HasDuplicates(*ini, section)) {
            found.push_back(section);
        }
    }
    return found;
}

} // namespace ruvo
