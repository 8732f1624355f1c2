// Text of an INI file, parsed once: sections, entries, line numbers and all occurrences, by the rules of the
// Windows profile functions. The POSIX profile reader, the duplicate-key test and the tools share it.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// What is dropped around names and values. 0x1A is here too: old editors end a file with it.
inline constexpr std::string_view kIniBlanks = " \t\v\f\x1A";

/// Names of sections and keys compare with ASCII letters folded, other bytes as they are.
bool EqualIniNames(std::string_view left, std::string_view right);

/// One line of a section that counts as an occurrence of a key.
struct SIniEntry {
    std::string key;
    /// As reading returns it: without blanks around it, without one pair of quotes around it. None for a line
    /// without "=": it counts as an occurrence, but reads as missing.
    std::optional<std::string> value;
    std::size_t line = 0; ///< from 1

    /// A comment line: no listing of keys shows it, yet it can be read by its key, semicolon included.
    bool IsComment() const { return key.starts_with(';'); }
};

struct SIniSection {
    std::string name;
    std::size_t line = 0; ///< of the header; 0 for the nameless section before any header
    std::vector<SIniEntry> entries;
};

/// A parsed INI text.
class CIniText {
public:
    /// Parses any bytes; nothing is an error. A UTF-8 byte-order mark at the start is skipped. The time grows
    /// with the text, not with its square; a question is answered from an index.
    static CIniText Parse(std::string_view text);

    /// All sections in the order of the file, repeated names included; the first has no name and holds what
    /// precedes any header.
    const std::vector<SIniSection>& Sections() const { return m_sections; }

    /// The first section of that name, the only one that reading looks at; null when there is none.
    const SIniSection* FindSection(std::string_view name) const;
    /// The keys of the first section of that name, repeated ones included, without comments.
    std::vector<std::string> KeyNames(std::string_view section) const;
    /// The first occurrence of a key in the first section of that name; null when there is none.
    const SIniEntry* FindEntry(std::string_view section, std::string_view key) const;
    /// Every occurrence of the key in every section of that name, in the order of the file.
    std::vector<const SIniEntry*> FindAll(std::string_view section, std::string_view key) const;

private:
    /// One section header or entry under the hash of its folded name (for an entry: of section and key).
    struct SIndexRow {
        std::size_t hash = 0;
        std::size_t section = 0;
        std::size_t entry = 0;
    };
    using Index = std::vector<SIndexRow>;

    CIniText() = default;
    void ParseLine(std::string_view line, std::size_t number);
    void BuildIndex();
    static void SortIndex(Index& index);
    static std::span<const SIndexRow> RowsOf(const Index& index, std::size_t hash);
    bool IsMatch(const SIndexRow& row, std::string_view section, std::string_view key) const;

    std::vector<SIniSection> m_sections;
    // Sorted by hash, then by place in the file: the first match of a range is the first occurrence.
    Index m_sectionIndex;
    Index m_entryIndex;
};

} // namespace ruvo
