// Verifies that an edit made the intended change and no other, by comparing what a reader finds.
#include "tools/ini/ini_document.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <vector>

namespace ruvo {

namespace {

/// A section header (without a key) or an entry.
struct SRow {
    std::string section;
    std::optional<std::string> key;
    std::optional<std::string> value;

    bool operator==(const SRow&) const = default;
};
using Rows = std::vector<SRow>;
using Values = std::vector<std::optional<std::string>>;

/// The whole file except the key.
Rows RowsWithout(const CIniText& ini, const SIniChange& change) {
    Rows rows;
    for (const SIniSection& section : ini.Sections()) {
        rows.push_back({section.name, std::nullopt, std::nullopt});
        for (const SIniEntry& entry : section.entries) {
            if (!EqualIniNames(section.name, change.section) || !EqualIniNames(entry.key, change.key)) {
                rows.push_back({section.name, entry.key, entry.value});
            }
        }
    }
    return rows;
}

Values ValuesOf(const CIniText& ini, const SIniChange& change) {
    Values values;
    for (const SIniEntry* const entry : ini.FindAll(change.section, change.key)) {
        values.push_back(entry->value);
    }
    return values;
}

/// How many of the occurrences are in the section that is read.
std::ptrdiff_t CountInSection(const CIniText& ini, const SIniChange& change) {
    const SIniSection* const section = ini.FindSection(change.section);
    return section == nullptr ? 0 : std::ranges::count_if(section->entries, [&](const SIniEntry& entry) {
        return EqualIniNames(entry.key, change.key);
    });
}

} // namespace

bool IsOnlyChange(const CIniText& before, const CIniText& after, const SIniChange& change) {
    Rows wanted = RowsWithout(before, change);
    Values values = ValuesOf(before, change);
    const std::ptrdiff_t readable = CountInSection(before, change);
    if (change.value == nullptr) {
        values.erase(values.begin(), values.begin() + readable);
    } else {
        values.erase(values.begin(), values.begin() + std::min<std::ptrdiff_t>(readable, 1));
        values.insert(values.begin(), *change.value);
        if (before.FindSection(change.section) == nullptr) {
            wanted.push_back({std::string(change.section), std::nullopt, std::nullopt});
        }
    }
    const SIniEntry* const read = after.FindEntry(change.section, change.key);
    const bool reads =
        change.value == nullptr ? read == nullptr : read != nullptr && read->value == *change.value;
    return reads && ValuesOf(after, change) == values && RowsWithout(after, change) == wanted;
}

} // namespace ruvo
