// Result codes and the lines behind them.
#include "tools/ini/diagnostics.h"

#include "config/configuration.h"
#include "config/duplicate_key.h"
#include "paths/path_utilities.h"
#include "platform/ini_text.h"
#include "tools/ini/relay_entries.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace ruvo {

namespace {

/// What is wanted where no line of the file is at fault.
struct SElsewhereRow {
    EResultCode code;
    std::string_view text;
};
constexpr std::array kElsewhere{
    SElsewhereRow{EResultCode::IniFileNotOpened,
                  "want a file that can be read and holds at least one section"},
    SElsewhereRow{EResultCode::CommsServerFailed,
                  "want the comms server P32LS, registered or beside the program"},
    SElsewhereRow{
        EResultCode::RegistryDestinationInvalid,
        "the registry value Q7SecurityLogs names the folder for events; want one that can be written"},
};

using Diagnostics = std::vector<SDiagnostic>;

/// "KEY=TEXT: ..."; a scrambled password stays where it is.
SDiagnostic EntryDiagnostic(const SIniEntry& entry, std::string_view section, const std::string& text) {
    const bool isSecret = EqualIniNames(section, kPasswordsSection);
    const std::string value = isSecret ? "..." : entry.value.value_or("");
    return {entry.line, entry.key + (entry.value ? "=" + value : "") + ": " + text};
}

/// For what is not there: the section that it is missing from, or the file when that is missing too.
SDiagnostic MissingDiagnostic(const CIniText& ini, std::string_view section, const std::string& what,
                              const std::string& want) {
    const SIniSection* const found = ini.FindSection(section);
    const std::string place = found != nullptr ? " in " : ", nor a section ";
    return {found != nullptr ? found->line : 0, what + place + Bracketed(section) + ": " + want};
}

/// Which of the things that may be wrong with an event root is. Separators of either kind are understood, so
/// only what is still there in the full path is at fault.
std::string_view WantEventRoot(const std::string& given) {
    const std::string root =
        FullFolderPath(given.empty() ? std::string(GeneralKey("EventRootDir").defaultText) : given);
    const SPathParts parts = SplitPath(root);
    const std::string behindDrive = parts.folder + parts.name + parts.extension;
    if (!root.empty() && behindDrive.empty()) {
        return "want a folder below the drive, not the drive alone";
    }
    return HasForbiddenCharacter(behindDrive) ? "want a folder without * ? \" < > |"
                                              : "want a folder that can be made and written";
}

void ExplainKey(const CIniText& ini, const SGeneralKey& key, Diagnostics& diagnostics) {
    const SIniEntry* const entry = ini.FindEntry(kGeneralSection, key.name);
    const std::string want =
        key.rule == EKeyRule::EventRoot
            ? std::string(WantEventRoot(entry != nullptr ? entry->value.value_or("") : ""))
            : "want " + Expectation(key.rule);
    diagnostics.push_back(
        entry != nullptr ? EntryDiagnostic(*entry, kGeneralSection, want)
                         : MissingDiagnostic(ini, kGeneralSection, "no key " + std::string(key.name), want));
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

void ExplainEmptySection(const CIniText& ini, const SLinkRow& link, Diagnostics& diagnostics) {
    const std::string want = "want entries such as " + std::string(link.entryExpected);
    ForEachRelayEntry(ini, link.section, [&](const SIniEntry& entry, const std::string& /*key*/) {
        diagnostics.push_back(EntryDiagnostic(entry, link.section, want));
    });
    if (diagnostics.empty()) {
        diagnostics.push_back(MissingDiagnostic(ini, link.section, "no entry", want));
    }
}

void ExplainEntries(const CIniText& ini, ELink link, const SEntryRule& rule, Diagnostics& diagnostics) {
    const std::string_view section = LinkRow(link).section;
    ForEachRelayEntry(ini, section, [&](const SIniEntry& entry, const std::string& /*key*/) {
        if (entry.value && IsEntry(link, *entry.value) && !rule.accepts(*entry.value)) {
            diagnostics.push_back(EntryDiagnostic(entry, section, "want " + std::string(rule.expected)));
        }
    });
}

void ExplainDuplicates(const CIniText& ini, std::string_view section, Diagnostics& diagnostics) {
    ForEachRelayEntry(ini, section, [&](const SIniEntry& first, const std::string& key) {
        if (HasDuplicateKey(&ini, section, key) != EDuplicateKey::Yes) {
            return;
        }
        const SIniEntry& second = *ini.FindAll(section, key)[1];
        const auto also = [](const SIniEntry& other) {
            return "also in line " + std::to_string(other.line) + "; want each key once";
        };
        diagnostics.push_back(EntryDiagnostic(first, section, also(second)));
        diagnostics.push_back(EntryDiagnostic(second, section, also(first)));
    });
}

void ExplainSection(EResultCode code, const CIniText& ini, ELink link, Diagnostics& diagnostics) {
    const SLinkRow& row = LinkRow(link);
    if (code == row.empty) {
        ExplainEmptySection(ini, row, diagnostics);
    }
    if (code == row.duplicate) {
        ExplainDuplicates(ini, row.section, diagnostics);
    }
    for (const SEntryRule& rule : EntryRules(link)) {
        if (code == rule.refusal) {
            ExplainEntries(ini, link, rule, diagnostics);
        }
    }
}

} // namespace

std::vector<SDiagnostic> ExplainResultCode(EResultCode code, const CIniText& ini) {
    Diagnostics diagnostics;
    if (code == EResultCode::Success) {
        return diagnostics;
    }
    for (const SGeneralKey& key : kGeneralKeys) {
        if (code == key.refusal) {
            ExplainKey(ini, key, diagnostics);
        }
    }
    for (std::size_t link = 0; link < kLinks.size(); ++link) {
        ExplainSection(code, ini, static_cast<ELink>(link), diagnostics);
    }
    if (code == EResultCode::PasswordsDuplicate) {
        ExplainDuplicates(ini, kPasswordsSection, diagnostics);
    }
    for (const SElsewhereRow& row : kElsewhere) {
        if (code == row.code) {
            diagnostics.push_back({0, std::string(row.text)});
        }
    }
    return diagnostics;
}

} // namespace ruvo
