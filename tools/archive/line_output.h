// Where the lines of the archive's rows go.
#pragma once

#include "tools/text_output.h"
#include "tools/whole_file.h"

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

    [[nodiscard]] bool IsStandard() const { return !m_place; }
    [[nodiscard]] CTextOutput& Text() { return m_file ? *m_file : m_console.out; }
    /// Ends the output; a file takes its place, unless there are not all lines in it. What went wrong; empty
    /// for nothing.
    [[nodiscard]] std::string Finish(bool isWhole);

private:
    SConsole& m_console;
    std::string m_path;
    std::optional<CFilePlace> m_place; ///< none for the standard output
    std::ofstream m_stream;
    std::optional<CTextOutput> m_file;
    int m_openError = 0;
    bool m_isFinished = false;
};

} // namespace ruvo
