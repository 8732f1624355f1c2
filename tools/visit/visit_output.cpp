#include "tools/visit/visit_output.h"

#include "base/text.h"
#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::string_view kClearLine = "\r\x1B[K";

/// Nothing in it steers a terminal. Line feeds and tabs stay.
std::string Harmless(std::string_view utf8) {
    std::string text(utf8);
    std::erase_if(text, [](char c) { return IsControlCharacter(c) && c != '\n' && c != '\t'; });
    std::ranges::replace(text, '\t', ' ');
    return EscapeControls(text, ELineFeeds::Keep); // those of more than one byte
}

} // namespace

CVisitOutput::CVisitOutput(SConsole& console, bool outIsJournal, bool errorIsJournal)
    : m_console(console), m_outIsJournal(outIsJournal), m_errorIsJournal(errorIsJournal) {}

void CVisitOutput::Say(EPriority priority, std::string_view lines) {
    ClearProgress();
    Write(m_console.out, m_outIsJournal, priority, lines);
}

void CVisitOutput::Complain(std::string_view text, EPriority priority) {
    ClearProgress();
    Write(m_console.error, m_errorIsJournal, priority, "ruvoctl: " + std::string(text));
}

void CVisitOutput::Write(CTextOutput& out, bool isJournal, EPriority priority, std::string_view lines) {
    const auto write = [&](std::string_view line) {
        if (isJournal) {
            out.Write(std::string{'<', static_cast<char>(priority), '>'});
        }
        const std::string harmless = Harmless(line) + "\n";
        out.Write(harmless);
        if (priority != EPriority::Notice) {
            Keep(harmless);
        }
    };
    CLines parts;
    parts.Add(lines, write);
    parts.Finish(write);
    out.Flush();
}

void CVisitOutput::Keep(const std::string& line) {
    constexpr std::size_t kMost = 8000; // the system's log takes a text of some thirty thousand characters
    if (m_said.more == 0 && m_said.lines.size() + line.size() <= kMost) {
        m_said.lines += line;
    } else {
        ++m_said.more;
    }
}

void CVisitOutput::ShowProgress(std::string_view text) {
    if (!m_console.errorIsTerminal) {
        return;
    }
    std::string line = Harmless(text);
    while (ColumnsOf(line) + 1 > m_console.width) {
        line.pop_back();
    }
    m_console.error.Write(std::string(kClearLine) + line);
    m_console.error.Flush();
    m_isProgressShown = true;
}

void CVisitOutput::ClearProgress() {
    if (m_isProgressShown) {
        m_isProgressShown = false;
        m_console.error.Write(kClearLine);
        m_console.error.Flush();
    }
}

} // namespace ruvo
