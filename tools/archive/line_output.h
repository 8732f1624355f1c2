// The destination of the archive's lines of JSON.
#pragma once

#include "tools/text_output.h"
#include "tools/whole_file.h"

#include <ostream>
#include <streambuf>
#include <string>

namespace ruvo {

/// Standard output, or a file that replaces the old one only when it is complete.
class CLineOutput {
public:
    /// "-" is the console's output, which must outlive this.
    CLineOutput(std::string path, SConsole& console);

    [[nodiscard]] bool IsStandard() const { return m_path == "-"; }
    [[nodiscard]] CTextOutput& Text() { return IsStandard() ? m_console.out : m_text; }
    /// Ends the output and, if all lines were written, moves the file into place. Returns a readable reason
    /// on failure, else an empty string.
    [[nodiscard]] std::string Finish(bool isWhole);

private:
    /// Passes the pieces to the file, and keeps the first failure.
    class CBuffer : public std::streambuf {
    public:
        void Open(const std::string& path) { m_result = m_file.Open(path); }
        COutputFileReplacement& File() { return m_file; }
        [[nodiscard]] const SAccessResult& Result() const { return m_result; }

    protected:
        std::streamsize xsputn(const char* text, std::streamsize size) override;
        int_type overflow(int_type letter) override;

    private:
        COutputFileReplacement m_file;
        SAccessResult m_result;
    };

    SConsole& m_console;
    std::string m_path;
    CBuffer m_buffer;
    std::ostream m_stream;
    CTextOutput m_text; ///< destroyed first
};

} // namespace ruvo
