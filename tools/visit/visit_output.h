// What a visit says: to a person at a terminal, to the systemd journal, or to a scheduler's mail.
#pragma once

#include "tools/text_output.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ruvo {

/// As the systemd journal numbers them.
enum class EPriority : char { Error = '3', Warning = '4', Notice = '6' };

/// What was said of problems, from the beginning.
struct SSaid {
    std::string lines;    ///< UTF-8, without control characters; some thousand characters at most
    std::size_t more = 0; ///< lines that are left out
};

/// Every line is complete and out at once. Control characters are removed; a progress line gives way.
class CVisitOutput {
public:
    CVisitOutput(SConsole& console, bool outIsJournal, bool errorIsJournal);
    CVisitOutput(const CVisitOutput&) = delete;
    CVisitOutput& operator=(const CVisitOutput&) = delete;
    ~CVisitOutput() { ClearProgress(); }

    /// Lines of UTF-8 on standard output.
    void Say(EPriority priority, std::string_view lines);
    /// One line on standard error.
    void Complain(std::string_view text, EPriority priority = EPriority::Error);
    /// Shown on a terminal only, until something else is said. It is cut to the terminal's width.
    void ShowProgress(std::string_view text);
    void ClearProgress();

    [[nodiscard]] const SSaid& Said() const { return m_said; }

    [[nodiscard]] bool IsForPerson() const { return m_console.errorIsTerminal; }
    [[nodiscard]] bool IsJournal() const { return m_outIsJournal; }

private:
    void Write(CTextOutput& out, bool isJournal, EPriority priority, std::string_view lines);
    void Keep(const std::string& line);

    SConsole& m_console;
    bool m_outIsJournal;
    bool m_errorIsJournal;
    bool m_isProgressShown = false;
    SSaid m_said;
};

/// Collects pieces of text, and hands over whole lines without their ends.
class CLines {
public:
    template <class Take>
    void Add(std::string_view piece, Take take) {
        m_rest += piece;
        for (std::size_t end = m_rest.find('\n'); end != std::string::npos; end = m_rest.find('\n')) {
            take(std::string_view(m_rest).substr(0, end));
            m_rest.erase(0, end + 1);
        }
    }
    /// What has no end yet, at the end.
    template <class Take>
    void Finish(Take take) {
        if (!m_rest.empty()) {
            take(std::string_view(m_rest));
            m_rest.clear();
        }
    }

private:
    std::string m_rest;
};

} // namespace ruvo
