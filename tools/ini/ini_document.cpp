#include "tools/ini/ini_document.h"

#include "config/configuration.h"
#include "platform/text_file.h"

#include <algorithm>
#include <utility>

namespace ruvo {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";
constexpr std::string_view kLineEnds = "\r\n";
constexpr std::string_view kUsualLineEnd = "\n";
constexpr std::size_t kWideSize = 2;
constexpr std::size_t kLastLine = static_cast<std::size_t>(-1);

bool IsWide(std::string_view bytes) {
    return bytes.starts_with(kUtf16Mark);
}

std::string Widened(std::string_view ascii) {
    std::string wide;
    for (const char c : ascii) {
        wide += c;
        wide += '\0';
    }
    return wide;
}

std::string_view LineEndAt(std::string_view text, std::size_t at) {
    if (at >= text.size()) {
        return {};
    }
    return text.substr(at, text.substr(at).starts_with("\r\n") ? 2 : 1);
}

/// Of the section's last line before the place where the key belongs: after the last smaller relay key, or
/// else after the section's head.
std::size_t LineBefore(const SIniSection& section, std::string_view key) {
    std::size_t line = 0;
    std::size_t head = section.line; // an empty line ends it: what follows may be the next section's heading
    bool hasRelays = false;
    for (const SIniEntry& entry : section.entries) {
        head = !entry.IsComment() || entry.line == head + 1 ? entry.line : head;
        const bool isRelay = IsRelayKey(key) && IsRelayKey(entry.key); // another key has no place among them
        hasRelays = hasRelays || isRelay;
        if (isRelay && entry.key.substr(2) < key.substr(2)) {
            line = entry.line;
        }
    }
    if (line != 0) {
        return line;
    }
    return hasRelays ? section.line : head;
}

} // namespace

CIniDocument::CIniDocument(std::string bytes)
    : m_bytes(std::move(bytes)), m_text(TextOfFileBytes(m_bytes)), m_ini(CIniText::Parse(m_text)) {}

std::string_view WhyNotReadable(std::string_view bytes) {
    return bytes.starts_with(kBigEndianMark)
               ? "the file is big-endian UTF-16, which a run cannot read; save it as UTF-8"
               : std::string_view();
}

std::string_view CIniDocument::WhyNotEditable() const {
    if (const std::string_view why = WhyNotReadable(m_bytes); !why.empty()) {
        return why;
    }
    if (IsWide(m_bytes) && m_bytes.size() % kWideSize != 0) {
        return "the file is UTF-16 and ends in the middle of a character; save it as UTF-8";
    }
    return m_text.find('\0') != std::string::npos ? "the file contains NUL characters; save it as plain text"
                                                  : std::string_view();
}

void CIniDocument::Set(std::string_view section, std::string_view key, std::string_view value) {
    if (const SIniEntry* const entry = m_ini.FindEntry(section, key)) {
        ChangeLine(entry->line, value);
        return;
    }
    if (m_ini.FindSection(section) == nullptr) {
        const bool isFirst = m_text.empty() || m_text == kByteOrderMark;
        InsertLine(kLastLine, (isFirst ? "" : LineEnd(Line(1))) + "[" + std::string(section) + "]");
    }
    const SIniSection* const found = m_ini.FindSection(section);
    InsertLine(LineBefore(*found, key), std::string(key) + "=" + std::string(value));
}

void CIniDocument::Remove(std::string_view section, std::string_view key) {
    const SIniSection* const found = m_ini.FindSection(section);
    if (found == nullptr) {
        return;
    }
    // In one pass: every line may hold a key.
    SLine line = Line(0);
    std::string text = m_text.substr(0, line.next);
    std::string bytes = m_bytes.substr(0, ByteAt(line.next));
    std::size_t byteAt = bytes.size();
    auto entry = found->entries.begin();
    for (std::size_t number = 1; line.next < m_text.size(); ++number) {
        line = NextLine(line);
        const std::string_view whole = std::string_view(m_text).substr(line.begin, line.next - line.begin);
        const std::size_t size = SizeInBytes(whole);
        entry = std::find_if(entry, found->entries.end(),
                             [number](const SIniEntry& each) { return each.line >= number; });
        const bool isCut =
            entry != found->entries.end() && entry->line == number && EqualIniNames(entry->key, key);
        if (!isCut) {
            text += whole;
            bytes.append(m_bytes, byteAt, size);
        }
        byteAt += size;
    }
    m_text = std::move(text);
    m_bytes = std::move(bytes);
    m_ini = CIniText::Parse(m_text);
}

void CIniDocument::Splice(std::size_t begin, std::size_t end, std::string_view with) {
    const std::size_t first = ByteAt(begin);
    m_bytes.replace(first, ByteAt(end) - first, IsWide(m_bytes) ? Widened(with) : std::string(with));
    m_text.replace(begin, end - begin, with);
    m_ini = CIniText::Parse(m_text);
}

std::size_t CIniDocument::ByteAt(std::size_t textAt) const {
    const std::size_t mark = IsWide(m_bytes) ? kUtf16Mark.size() : 0;
    return mark + SizeInBytes(std::string_view(m_text).substr(0, textAt));
}

/// A character of the text is one unit of UTF-16, or two when it takes four bytes of UTF-8.
std::size_t CIniDocument::SizeInBytes(std::string_view text) const {
    if (!IsWide(m_bytes)) {
        return text.size();
    }
    std::size_t units = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        units += (byte & 0xC0U) == 0x80 ? 0 : byte >= 0xF0 ? 2 : 1;
    }
    return units * kWideSize;
}

/// Counts as the reader counts; a number beyond the last line means the last one.
CIniDocument::SLine CIniDocument::Line(std::size_t number) const {
    const std::size_t start = m_text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    SLine line{start, start, start};
    for (std::size_t at = 0; at < number && line.next < m_text.size(); ++at) {
        line = NextLine(line);
    }
    return line;
}

CIniDocument::SLine CIniDocument::NextLine(const SLine& line) const {
    const std::size_t end = std::min(m_text.find_first_of(kLineEnds, line.next), m_text.size());
    return {line.next, end, end + LineEndAt(m_text, end).size()};
}

/// The line end of that line, or of the file's first line where that one has none.
std::string CIniDocument::LineEnd(const SLine& like) const {
    std::string_view found = LineEndAt(m_text, like.end);
    if (found.empty()) {
        const SLine first = Line(1);
        found = LineEndAt(m_text, first.end);
    }
    return std::string(found.empty() ? kUsualLineEnd : found);
}

/// A last line without an end gets one, and the new last line has none.
void CIniDocument::InsertLine(std::size_t after, const std::string& line) {
    const SLine before = Line(after);
    const std::string lineEnd = LineEnd(before);
    const bool isOpen = before.end == before.next && before.end != before.begin;
    Splice(before.next, before.next, isOpen ? lineEnd + line : line + lineEnd);
}

void CIniDocument::ChangeLine(std::size_t number, std::string_view value) {
    const SLine line = Line(number);
    const std::string_view said = std::string_view(m_text).substr(line.begin, line.end - line.begin);
    const std::size_t equals = said.find('=');
    if (equals == std::string_view::npos) {
        const std::size_t end = line.begin + said.find_last_not_of(kIniBlanks) + 1;
        Splice(end, end, "=" + std::string(value));
        return;
    }
    const std::size_t first = said.find_first_not_of(kIniBlanks, equals + 1);
    if (first == std::string_view::npos) {
        Splice(line.begin + equals + 1, line.begin + equals + 1, value);
        return;
    }
    Splice(line.begin + first, line.begin + said.find_last_not_of(kIniBlanks) + 1, value);
}

} // namespace ruvo
