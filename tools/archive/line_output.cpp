#include "tools/archive/line_output.h"

#include <utility>

namespace ruvo {

std::streamsize CLineOutput::CBuffer::xsputn(const char* text, std::streamsize size) {
    if (m_result.Good()) {
        m_result = m_file.Write({text, static_cast<std::size_t>(size)});
    }
    return m_result.Good() ? size : 0;
}

CLineOutput::CBuffer::int_type CLineOutput::CBuffer::overflow(int_type letter) {
    const char text = traits_type::to_char_type(letter);
    return xsputn(&text, 1) == 1 ? letter : traits_type::eof();
}

CLineOutput::CLineOutput(std::string path, SConsole& console)
    : m_console(console), m_path(std::move(path)), m_stream(&m_buffer), m_text(m_stream) {
    if (!IsStandard()) {
        m_buffer.Open(m_path);
    }
}

std::string CLineOutput::Finish(bool isWhole) {
    Text().Flush();
    if (IsStandard()) {
        return {}; // the program itself reports that failure
    }
    SAccessResult result = m_buffer.Result();
    if (result.Good() && !isWhole && !m_buffer.File().IsStream()) {
        return m_path +
               (m_buffer.File().HasOldFile()
                    ? ": not replaced, because not all records could be read; the old file is unchanged"
                    : ": not written, because not all records could be read");
    }
    if (result.Good()) {
        result = m_buffer.File().Commit();
    }
    return result.Good() ? std::string() : m_path + ": " + OutputFailureText(result);
}

} // namespace ruvo
