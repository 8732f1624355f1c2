// Where the lines of the archive's rows go.
#pragma once

#include "tools/text_output.h"

#include <fstream>
#include <optional>
#include <string>

namespace ruvo {

/// The standard output, or a file that takes its place only when it is whole.
class CLineOutput {
public:
    /// "-" is the console's output, which must outlive this.
    CLineOutput(const std::string& path, SConsole& console);
    CLineOutput(const CLineOutput&) = delete;
    CLineOutput& operator=(const CLineOutput&) = delete;
    ~CLineOutput();

    [[nodiscard]] bool IsStandard() const { return m_path == "-"; }
    [[nodiscard]] CTextOutput& Text() { return m_file ? *m_file : m_console.out; }
    /// Puts the file in its place. What went wrong; empty for nothing.
    [[nodiscard]] std::string Finish();

private:
    [[nodiscard]] std::string Beside() const { return m_path + ".tmp"; }

    SConsole& m_console;
    std::string m_path;
    std::ofstream m_stream;
    std::optional<CTextOutput> m_file;
    int m_openError = 0;
    bool m_isFinished = false;
};

} // namespace ruvo
