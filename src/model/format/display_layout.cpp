#include "model/format/display_layout.h"

#include <algorithm>

namespace ruvo {
namespace {

constexpr char kTab = '\x09';
constexpr char kLineFeed = '\x0A';
constexpr char kReturn = '\x0D';
constexpr char kColumn = '\x10'; ///< the next character is the column
constexpr char kContinued = '\x14';
constexpr char kNewLine = '\x19';
constexpr char kWideTab = '\x1D';
constexpr std::size_t kTabColumns = 8;
constexpr std::size_t kWideTabColumns = 16;
constexpr std::string_view kLineEnds = "\x0A\x0D\x14\x19";

std::size_t ColumnOf(char c) {
    return static_cast<std::size_t>(static_cast<unsigned char>(c) & 0x7FU);
}

/// The next length, from this one on, that is a multiple of the columns.
std::size_t NextMultiple(std::size_t length, std::size_t columns) {
    return (length + columns - 1) / columns * columns;
}

void PadLine(std::string& line, std::size_t length) {
    line.resize(std::max(line.size(), length), ' ');
}

bool IsBlankOrControl(char c) {
    return c == ' ' || IsDisplayControl(c);
}

/// A blank or control character.
void AppendCleaned(std::string& line, char c) {
    if (c == kTab) {
        PadLine(line, NextMultiple(line.size(), kTabColumns));
    } else if (c == kWideTab) {
        PadLine(line, NextMultiple(line.size(), kWideTabColumns));
    } else if (c == ' ' && !line.empty() && line.back() == ' ') {
        return;
    } else if (c == ' ') {
        line += c;
    } else if (kLineEnds.find(c) == std::string_view::npos) {
        line += '.';
    }
}

} // namespace

std::string CleanDisplayLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto* const wordEnd =
            std::find_if(text.data() + i, text.data() + text.size(), IsBlankOrControl);
        const auto wordSize = static_cast<std::size_t>(wordEnd - text.data()) - i;
        line += text.substr(i, wordSize);
        i += wordSize;
        if (i == text.size()) {
            break;
        }
        if (text[i] != kColumn) {
            AppendCleaned(line, text[i]);
        } else if (++i < text.size()) {
            PadLine(line, ColumnOf(text[i]));
        }
    }
    return line;
}

void CDisplayLayout::Put(char c) {
    std::string& line = Line();
    const std::size_t length = std::max(line.size(), m_column + 1);
    if (m_size + (length - line.size()) > kMaxSize) {
        return;
    }
    m_size += length - line.size();
    line.resize(length, ' ');
    line[m_column++] = c;
}

/// Padding goes to the line's end and takes the cursor along; where it adds nothing, the cursor stays.
void CDisplayLayout::PadToLength(std::size_t length) {
    if (Line().size() < length) {
        m_column = std::max(m_column, Line().size());
    }
    while (Line().size() < length) {
        const std::size_t before = Line().size();
        Put(' ');
        if (Line().size() == before) {
            return;
        }
    }
}

void CDisplayLayout::PadToMultiple(std::size_t columns) {
    if (Line().size() % columns != 0) {
        // A blank beyond the line's end may itself pass the multiple that was next.
        PadToLength(NextMultiple(std::max(m_column, Line().size()) + 1, columns));
    }
}

void CDisplayLayout::NextLine() {
    ++m_line;
    m_lines.resize(std::max(m_lines.size(), m_line + 1));
}

void CDisplayLayout::WriteControl(char control) {
    switch (control) {
    case kTab:
        PadToMultiple(kTabColumns);
        break;
    case kWideTab:
        PadToMultiple(kWideTabColumns);
        break;
    case kLineFeed:
        NextLine();
        break;
    case kReturn:
        m_column = 0;
        break;
    case kNewLine:
        NextLine();
        m_column = 0;
        break;
    case kContinued:
        m_continued = true;
        break;
    default:
        Put('.');
    }
}

void CDisplayLayout::Write(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == kColumn) {
            if (++i < text.size()) {
                PadToLength(ColumnOf(text[i]));
            }
        } else if (IsDisplayControl(text[i])) {
            WriteControl(text[i]);
        } else {
            Put(text[i]);
        }
    }
}

std::string CDisplayLayout::GetText() const {
    std::string text;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        text += i > 0 ? "\n" : "";
        text += m_lines[i];
    }
    return text;
}

} // namespace ruvo
