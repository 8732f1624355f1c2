// The order of steps, which is the same on every system.
#include "platform/file_access.h"

#include "platform/files.h"

#include <span>
#include <utility>

namespace ruvo {

namespace {

constexpr std::string_view kNewPrefix = "RVI";

std::string FolderOf(const std::string& path) {
    const std::size_t separator = path.find_last_of("\\/");
    return separator == std::string::npos ? "." : path.substr(0, separator + 1);
}

SAccessResult WriteDurably(const std::string& path, std::string_view bytes) {
    CFile file;
    std::size_t count = 0;
    SFileResult result = file.Open(path, {.write = true});
    if (result.Good()) {
        result = file.Write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, count);
    }
    if (result.Good()) {
        result = file.FlushToDisk();
    }
    if (result.Good()) {
        result = file.Close();
    }
    return result.Good() ? SAccessResult{} : SAccessResult{EAccessFailure::NotWritten, result.systemCode};
}

} // namespace

SAccessResult WriteNewPrivateFile(const std::string& path, std::string_view bytes, std::string_view readers) {
    SAccessResult result = file_access::MakeNew(path, readers);
    if (!result.Good()) {
        return result;
    }
    result = WriteDurably(path, bytes);
    if (!result.Good()) {
        RemoveFile(path);
        return result;
    }
    FlushFolder(FolderOf(path));
    return result;
}

CFileExchange::~CFileExchange() {
    if (!m_newPath.empty()) {
        RemoveFile(m_newPath);
    }
}

SAccessResult CFileExchange::Prepare(const std::string& path, std::string_view bytes) {
    SAccessResult result = file_access::FindExchangeable(path, m_path);
    if (!result.Good()) {
        return result;
    }
    m_newPath = MakeUniqueFile(FolderOf(m_path), std::string(kNewPrefix));
    if (m_newPath.empty()) {
        return {EAccessFailure::NotMade, 0};
    }
    result = file_access::MakeAlike(m_path, m_newPath); // while nothing can be read from it
    return result.Good() ? WriteDurably(m_newPath, bytes) : result;
}

SAccessResult CFileExchange::Commit() {
    SAccessResult result = file_access::MoveOver(m_newPath, m_path);
    if (result.Good()) {
        m_newPath.clear();
        FlushFolder(FolderOf(m_path));
    }
    return result;
}

} // namespace ruvo
