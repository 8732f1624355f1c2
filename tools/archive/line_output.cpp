#include "tools/archive/line_output.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace ruvo {

CLineOutput::CLineOutput(const std::string& path, SConsole& console) : m_console(console), m_path(path) {
    if (path == "-") {
        return;
    }
    m_place.emplace(path);
    m_stream.open(m_place->WritePath(), std::ios::binary | std::ios::trunc);
    m_openError = m_stream ? 0 : errno;
    m_place->TakeAccessRights();
    m_file.emplace(m_stream);
}

CLineOutput::~CLineOutput() {
    if (m_place && !m_isFinished) {
        m_place->Discard();
    }
}

std::string CLineOutput::Finish(bool isWhole) {
    Text().Flush();
    if (IsStandard()) {
        return {}; // the program itself says when that failed
    }
    m_stream.close();
    std::error_code error(m_openError != 0 ? m_openError : m_file->FailureCode(), std::generic_category());
    if (!error && !m_stream) {
        error = std::make_error_code(std::errc::io_error); // when it was closed
    }
    if (!error && !isWhole && !m_place->IsDirect()) {
        std::error_code ignored;
        return m_path + (std::filesystem::exists(m_path, ignored) ? ": not replaced: the old one is kept"
                                                                  : ": not written: not all lines are there");
    }
    if (!error) {
        error = m_place->Settle();
    }
    m_isFinished = !error;
    return error ? m_path + ": " + error.message() : std::string();
}

} // namespace ruvo
