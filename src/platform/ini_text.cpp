#include "platform/ini_text.h"

#include "base/digest.h"
#include "base/text.h"

#include <algorithm>
#include <cstdint>
#include <tuple>
#include <utility>

namespace ruvo {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view WithoutBlanks(std::string_view text) {
    return Trim(text, kIniBlanks);
}

// The profile functions hand out C strings, so a text ends at its first NUL.
std::string CutAtNul(std::string_view text) {
    return std::string(text.substr(0, text.find('\0')));
}

std::string Unquote(std::string text) {
    const bool quoted =
        text.size() >= 2 && text.front() == text.back() && (text.front() == '"' || text.front() == '\'');
    return quoted ? text.substr(1, text.size() - 2) : text;
}

// Takes one line off the front of `rest`. CR LF is one line end, a lone CR or LF is one as well.
std::string_view NextLine(std::string_view& rest) {
    const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end);
    rest.remove_prefix(rest.starts_with("\r\n") ? 2 : std::min<std::size_t>(rest.size(), 1));
    return line;
}

// The name in a section header, none for any other line. The last bracket ends the name; what follows is
// lost.
std::optional<std::string_view> HeaderName(std::string_view line) {
    const std::size_t end = line.rfind(']');
    if (!line.starts_with('[') || end == std::string_view::npos) {
        return std::nullopt;
    }
    return WithoutBlanks(line.substr(1, end - 1));
}

// A digest of the folded names; every key of every section is asked for, so nothing is allocated.
std::size_t HashName(std::string_view section, std::string_view key) {
    std::uint64_t hash = kEmptyDigest;
    const auto add = [&hash](char c) { hash = AddToDigest(hash, static_cast<std::uint8_t>(ToLower(c))); };
    std::ranges::for_each(section, add);
    add('\n'); // no name holds a line end
    std::ranges::for_each(key, add);
    return static_cast<std::size_t>(hash);
}

} // namespace

bool EqualIniNames(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, {}, ToLower, ToLower);
}

CIniText CIniText::Parse(std::string_view text) {
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    CIniText parsed;
    parsed.m_sections.emplace_back(); // what precedes any header
    for (std::size_t number = 1; !text.empty(); ++number) {
        parsed.ParseLine(WithoutBlanks(NextLine(text)), number);
    }
    parsed.BuildIndex();
    return parsed;
}

void CIniText::ParseLine(std::string_view line, std::size_t number) {
    if (line.empty()) {
        return;
    }
    if (const auto name = HeaderName(line)) {
        m_sections.push_back({CutAtNul(*name), number, {}});
        return;
    }
    const std::size_t equals = line.find('=');
    SIniEntry entry{CutAtNul(WithoutBlanks(line.substr(0, equals))), std::nullopt, number};
    if (equals != std::string_view::npos) {
        entry.value = Unquote(CutAtNul(WithoutBlanks(line.substr(equals + 1))));
    }
    m_sections.back().entries.push_back(std::move(entry));
}

void CIniText::BuildIndex() {
    for (std::size_t section = 0; section < m_sections.size(); ++section) {
        const SIniSection& current = m_sections[section];
        m_sectionIndex.push_back({HashName(current.name, ""), section, 0});
        for (std::size_t entry = 0; entry < current.entries.size(); ++entry) {
            m_entryIndex.push_back({HashName(current.name, current.entries[entry].key), section, entry});
        }
    }
    SortIndex(m_sectionIndex);
    SortIndex(m_entryIndex);
}

void CIniText::SortIndex(Index& index) {
    std::sort(index.begin(), index.end(), [](const SIndexRow& left, const SIndexRow& right) {
        return std::tie(left.hash, left.section, left.entry) <
               std::tie(right.hash, right.section, right.entry);
    });
}

std::span<const CIniText::SIndexRow> CIniText::RowsOf(const Index& index, std::size_t hash) {
    const auto before = [](const SIndexRow& row, std::size_t wanted) { return row.hash < wanted; };
    const auto after = [](std::size_t wanted, const SIndexRow& row) { return wanted < row.hash; };
    return {std::lower_bound(index.begin(), index.end(), hash, before),
            std::upper_bound(index.begin(), index.end(), hash, after)};
}

bool CIniText::IsMatch(const SIndexRow& row, std::string_view section, std::string_view key) const {
    const SIniSection& candidate = m_sections[row.section];
    return EqualIniNames(candidate.name, section) && EqualIniNames(candidate.entries[row.entry].key, key);
}

const SIniSection* CIniText::FindSection(std::string_view name) const {
    name = WithoutBlanks(name);
    for (const SIndexRow& row : RowsOf(m_sectionIndex, HashName(name, ""))) {
        if (EqualIniNames(m_sections[row.section].name, name)) {
            return &m_sections[row.section];
        }
    }
    return nullptr;
}

std::vector<std::string> CIniText::KeyNames(std::string_view section) const {
    std::vector<std::string> names;
    const SIniSection* const found = FindSection(section);
    for (const SIniEntry& entry :
         found != nullptr ? std::span(found->entries) : std::span<const SIniEntry>()) {
        if (!entry.IsComment()) {
            names.push_back(entry.key);
        }
    }
    return names;
}

const SIniEntry* CIniText::FindEntry(std::string_view section, std::string_view key) const {
    section = WithoutBlanks(section);
    key = WithoutBlanks(key);
    for (const SIndexRow& row : RowsOf(m_entryIndex, HashName(section, key))) {
        if (IsMatch(row, section, key)) {
            // The first match of the whole file; reading sees it only when it is in the first such
            // section.
            const SIniSection& found = m_sections[row.section];
            return FindSection(section) == &found ? &found.entries[row.entry] : nullptr;
        }
    }
    return nullptr;
}

std::vector<const SIniEntry*> CIniText::FindAll(std::string_view section, std::string_view key) const {
    section = WithoutBlanks(section);
    key = WithoutBlanks(key);
    std::vector<const SIniEntry*> found;
    for (const SIndexRow& row : RowsOf(m_entryIndex, HashName(section, key))) {
        if (IsMatch(row, section, key)) {
            found.push_back(&m_sections[row.section].entries[row.entry]);
        }
    }
    return found;
}

} // namespace ruvo
