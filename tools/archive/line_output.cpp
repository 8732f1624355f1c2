#include "tools/archive/line_output.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace ruvo {

CLineOutput::CLineOutput(const std::string& path, SConsole& console) : m_console(console), m_path(path) {
    if (!IsStandard()) {
        m_stream.open(Beside(), std::ios::binary | std::ios::trunc);
        m_openError = m_stream ? 0 : errno;
        m_file.emplace(m_stream);
    }
}

CLineOutput::~CLineOutput() {
    if (!IsStandard() && !m_isFinished) {
        std::error_code ignored;
        std::filesystem::remove(Beside(), ignored);
    }
}

std::string CLineOutput::Finish() {
    Text().Flush();
    if (IsStandard()) {
        return {}; // the program itself says when that failed
    }
    m_stream.close();
    std::error_code error(m_openError != 0 ? m_openError : m_file->FailureCode(), std::generic_category());
    if (!error && !m_stream) {
        error = std::make_error_code(std::errc::io_error); // when it was closed
    }
    if (!error) {
        std::filesystem::rename(Beside(), m_path, error);
    }
    m_isFinished = !error;
    return error ? m_path + ": " + error.message() : std::string();
}

} // namespace ruvo
