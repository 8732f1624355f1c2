// Maps result codes to the lines that cause them.
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

/// What is expected where no line of the file is the cause.
struct SElsewhereRow {
    EResultCode code;
    std::string_view text;
};
constexpr std::array kElsewhere{
    SElsewhereRow{EResultCode::IniFileNotOpened, "expected a readable file with at least one section"},
    SElsewhereRow{EResultCode::CommsServerFailed,
                  "expected the comms server P32LS, registered or in the program's folder"},
    SElsewhereRow{EResultCode::RegistryDestinationInvalid,
                  "the registry value Q7SecurityLogs names the event folder; expected a writable folder"},
};

constexpr std::string_view kEachKeyOnce = "expected each key only once";

using Diagnostics = std::vector<SDiagnostic>;

/// "KEY=TEXT: ..."; a scrambled password is never shown.
SDiagnostic EntryDiagnostic(const SIniEntry& entry, std::string_view section, const std::string& text) {
    const bool isSecret = EqualIniNames(section, kPasswordsSection);
    const std::string value = isSecret ? "..." : entry.value.value_or("");
    return {entry.line, entry.key + (entry.value ? "=" + value : "") + ": " + text};
}

/// A missing entry: at its section, or at the file if the section is missing too.
SDiagnostic MissingDiagnostic(const CIniText& ini, std::string_view section, const std::string& what,
                              const std::string& want) {
    const SIniSection* const found = ini.FindSection(section);
    const std::string place = found != nullptr ? " in " : ", nor a section ";
    return {found != nullptr ? found->line : 0, what + place + Bracketed(section) + ": " + want};
}

/// What is wrong with an event root. Both kinds of separators are valid, so only the absolute path is
/// examined.
std::string_view WantEventRoot(const std::string& given) {
    const std::string root =
        FullFolderPath(given.empty() ? std::string(GeneralKey("EventRootDir").defaultText) : given);
    const SPathParts parts = SplitPath(root);
    const std::string behindDrive = parts.folder + parts.name + parts.extension;
    if (!root.empty() && behindDrive.empty()) {
        return "expected a folder below the drive, not the drive itself";
    }
    return HasForbiddenCharacter(behindDrive) ? "expected a folder without * ? \" < > |"
                                              : "expected a folder that can be created and written";
}

void ExplainKey(const CIniText& ini, const SGeneralKey& key, Diagnostics& diagnostics) {
    const SIniEntry* const entry = ini.FindEntry(kGeneralSection, key.name);
    const std::string want =
        key.rule == EKeyRule::EventRoot
            ? std::string(WantEventRoot(entry != nullptr ? entry->value.value_or("") : ""))
            : "expected " + Expectation(key.rule);
    diagnostics.push_back(
        entry != nullptr ? EntryDiagnostic(*entry, kGeneralSection, want)
                         : MissingDiagnostic(ini, kGeneralSection, "no key " + std::string(key.name), want));
}

/// Calls `take` with the effective entry of each relay key, in key order.
template <class TTake>
void ForEachRelayEntry(const CIniText& ini, std::string_view section, const TTake& take) {
    for (const std::string& key : RelayKeys(ini.KeyNames(section))) {
        if (const SIniEntry* const entry = ini.FindEntry(section, key)) {
            take(*entry, key);
        }
    }
}

void ExplainEmptySection(const CIniText& ini, const SLinkRow& link, Diagnostics& diagnostics) {
    const std::string want = "expected entries such as " + std::string(link.entryExpected);
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
            diagnostics.push_back(EntryDiagnostic(entry, section, "expected " + std::string(rule.expected)));
        }
    });
}

void ExplainDuplicates(const CIniText& ini, std::string_view section, Diagnostics& diagnostics) {
    ForEachRelayEntry(ini, section, [&](const SIniEntry& first, const std::string& key) {
        if (HasDuplicateKey(&ini, section, key) != EDuplicateKey::Yes) {
            return;
        }
        const std::vector<const SIniEntry*> same = ini.FindAll(section, key);
        const SIniEntry& second = *same[1];
        const auto also = [](const SIniEntry& other) {
            return "also on line " + std::to_string(other.line) + "; " + std::string(kEachKeyOnce);
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

std::string ExpectedInstead(EResultCode code) {
    std::vector<std::string> texts;
    const auto add = [&](EResultCode refusal, const std::string& what, std::string_view expected) {
        if (code == refusal && code != EResultCode::Success) {
            texts.push_back(what + ": " + std::string(expected));
        }
    };
    for (const SGeneralKey& key : kGeneralKeys) {
        add(key.refusal, std::string(key.name), "expected " + Expectation(key.rule));
    }
    for (std::size_t link = 0; link < kLinks.size(); ++link) {
        const SLinkRow& row = kLinks[link];
        const std::string section = Bracketed(row.section);
        add(row.empty, section, "expected entries such as " + std::string(row.entryExpected));
        add(row.duplicate, section, kEachKeyOnce);
        for (const SEntryRule& rule : EntryRules(static_cast<ELink>(link))) {
            add(rule.refusal, section, "expected " + std::string(rule.expected));
        }
    }
    add(EResultCode::PasswordsDuplicate, Bracketed(kPasswordsSection), kEachKeyOnce);
    for (const SElsewhereRow& row : kElsewhere) {
        if (code == row.code) {
            texts.emplace_back(row.text);
        }
    }
    return texts.empty() ? std::string() : texts.front();
}

} // namespace ruvo
