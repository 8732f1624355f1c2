// Bulk output through one big buffer.
#pragma once

#include "base/secret.h"

#include <cerrno>
#include <cstddef>
#include <istream>
#include <ostream>
#include <string>
#include <string_view>

namespace ruvo {

/// Gathers text and hands it to a stream in large pieces. The stream must outlive it. When the stream takes
/// no more (the reader of a pipe has gone, the disk is full), what follows is dropped and IsGood says so.
class CTextOutput {
public:
    explicit CTextOutput(std::ostream& stream) : m_stream(stream) {}
    CTextOutput(const CTextOutput&) = delete;
    CTextOutput& operator=(const CTextOutput&) = delete;
    ~CTextOutput() { Flush(); }

    /// The text to append to; call Settle after each piece.
    std::string& Text() { return m_text; }
    void Settle() {
        if (m_text.size() >= kPieceSize) {
            Flush();
        }
    }
    void Write(std::string_view text) {
        m_text += text;
        Settle();
    }
    /// Hands the text on at once, and leaves no copy of it here.
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
    /// Why the stream took no more, as the C library's error number; EPIPE when its reader has gone.
    int FailureCode() const { return m_errno; }

private:
    static constexpr std::size_t kPieceSize = std::size_t{256} * 1024;

    std::ostream& m_stream;
    std::string m_text;
    int m_errno = 0;
};

/// Where a command reads and writes, and what it may assume about it.
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
