// Buffered output of large texts.
#pragma once

#include "base/secret.h"

#include <cerrno>
#include <cstddef>
#include <istream>
#include <ostream>
#include <string>
#include <string_view>

namespace ruvo {

/// Collects text and writes it to a stream in large pieces. The stream must outlive it. After a failed write
/// (broken pipe, full disk) further text is dropped, and IsGood returns false.
class CTextOutput {
public:
    explicit CTextOutput(std::ostream& stream) : m_stream(stream) {}
    CTextOutput(const CTextOutput&) = delete;
    CTextOutput& operator=(const CTextOutput&) = delete;
    ~CTextOutput() { Flush(); }

    /// The text to append to; call FlushIfFull after each piece.
    std::string& Text() { return m_text; }
    void FlushIfFull() {
        if (m_text.size() >= kPieceSize) {
            Flush();
        }
    }
    void Write(std::string_view text) {
        m_text += text;
        FlushIfFull();
    }
    /// Writes the text at once, and keeps no copy of it.
    void WriteSecret(std::string_view text) {
        Flush();
        m_text.reserve(text.size());
        m_text += text;
        Flush();
        WipeText(m_text);
    }
    void Flush() {
        if (IsGood()) {
            m_stream.write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
            m_stream.flush();
            m_errno = IsGood() ? 0 : errno;
        }
        m_text.clear();
    }
    bool IsGood() const { return m_stream.good(); }
    /// errno of the failed write; EPIPE for a broken pipe.
    int FailureCode() const { return m_errno; }

private:
    static constexpr std::size_t kPieceSize = std::size_t{256} * 1024;

    std::ostream& m_stream;
    std::string m_text;
    int m_errno = 0;
};

/// The streams of a command, and their properties.
struct SConsole {
    std::istream& in;
    CTextOutput& out;
    CTextOutput& error;
    bool inIsTerminal = false;
    bool outIsTerminal = false;
    bool errorIsTerminal = false;
    std::size_t width = 100; ///< columns that lines for reading may take
};

} // namespace ruvo
