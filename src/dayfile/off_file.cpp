#include "dayfile/off_file.h"

#include "platform/clock.h"
#include "platform/debug_output.h"
#include "platform/full_path.h"
#include "platform/registry.h"

#include <array>
#include <optional>
#include <utility>

namespace ruvo {

namespace {

EFileCause CauseOf(EFileFailure failure) {
    static constexpr std::array kCauses{
        EFileCause::None,         EFileCause::Generic,          EFileCause::FileNotFound,
        EFileCause::BadPath,      EFileCause::TooManyOpenFiles, EFileCause::AccessDenied,
        EFileCause::InvalidFile,  EFileCause::SharingViolation, EFileCause::DiskFull,
        EFileCause::AccessDenied, EFileCause::Generic,
    };
    static_assert(kCauses.size() == static_cast<std::size_t>(EFileFailure::Exists) + 1);
    return kCauses[static_cast<std::size_t>(failure)];
}

/// A failed write distinguishes only a bad handle and a full disk.
EFileCause WriteCauseOf(EFileFailure failure) {
    const EFileCause cause = CauseOf(failure);
    return cause == EFileCause::InvalidFile || cause == EFileCause::DiskFull ? cause : EFileCause::Generic;
}

bool IsEngineerMode() {
    constexpr const char* kKey = "SOFTWARE\\Halvex\\Norvo Q7 Studio\\Recset-Parlane";
    const std::optional<std::string> value =
        ReadRegistryValue(ERegistryRoot::LocalMachine, kKey, "EngineerMode", sizeof(std::uint32_t));
    return value && !value->empty() && (static_cast<unsigned char>(value->front()) & 1U) != 0;
}

/// The line as it goes to disk; none when it is left out.
std::optional<std::string> FilterHeaderLine(const std::string& line) {
    if (!line.starts_with("Q7_") || line.starts_with("Q7_LANG:")) {
        return line;
    }
    if (!IsEngineerMode()) { // asked afresh for every line that it decides on
        return std::nullopt;
    }
    if (line.starts_with("Q7_VERSION")) {
        return "Q7_VERSION:" + std::to_string(static_cast<std::int32_t>(UnixSeconds()));
    }
    return line;
}

} // namespace

CFileException::CFileException(EFileCause cause, long systemCode, const std::string& path)
    : std::runtime_error(DisplayPath(path) + ": " + SystemErrorText(systemCode)), m_cause(cause),
      m_systemCode(systemCode), m_path(path) {}

CFileException::CFileException(EFileCause cause, const std::string& path, const std::string& why)
    : std::runtime_error(why), m_cause(cause), m_systemCode(0), m_path(path) {}

SFileResult CStdioFileThrower::Open(const std::string& path, SOpenMode mode) {
    m_path = path;
    return m_file.Open(path, mode);
}

void CStdioFileThrower::Require(SFileResult result) const {
    if (!result.Good()) {
        throw CFileException(CauseOf(result.failure), result.systemCode, m_path);
    }
}

void CStdioFileThrower::Write(std::span<const std::uint8_t> bytes) {
    std::size_t written = 0;
    const SFileResult result = m_file.Write(bytes, written);
    if (!result.Good() || written < bytes.size()) {
        throw CFileException(WriteCauseOf(result.failure), result.systemCode, m_path);
    }
}

void CStdioFileThrower::WriteString(std::string_view text) {
    Write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::uint64_t CStdioFileThrower::GetLength() {
    std::uint64_t length = 0;
    Require(m_file.GetLength(length));
    return length;
}

std::uint64_t CStdioFileThrower::Seek(std::int64_t offset, ESeekOrigin origin) {
    std::uint64_t position = 0;
    Require(m_file.Seek(offset, origin, position));
    return position;
}

void CStdioFileThrower::FlushToDisk() {
    Require(m_file.FlushToDisk());
}

void CStdioFileThrower::Close() {
    Require(m_file.Close());
}

void CStdioFileThrower::Abort() noexcept {
    static_cast<void>(m_file.Close());
}

bool COffFile::Open(const std::string& path, SOpenMode mode, CFileException& failure) {
    mode.plain = true;       // no link in its place leads the records elsewhere
    std::string name = path; // first: without memory for it, what the opening created would remain
    const SFileResult opened = m_file.Open(path, mode);
    if (!opened.Good()) {
        failure = CFileException(CauseOf(opened.failure), opened.systemCode, path);
        return false;
    }
    m_fileName = std::move(name);
    // What has no end to seek, or no way back from it, is found out here and not at the first record.
    try {
        if (m_file.Seek(0, ESeekOrigin::End) != 0) {
            m_file.Seek(0, ESeekOrigin::Start);
        }
    } catch (const CFileException& raised) {
        failure = raised;
        return false;
    }
    return true;
}

std::size_t COffFile::WriteLine(std::string_view text) {
    m_file.WriteString(text);
    m_file.WriteString("\r\n");
    return text.size() + 2;
}

std::string COffFile::HeaderBytes(const CTextFileHeader& header) {
    std::string bytes;
    for (const std::string& line : header.lines) {
        if (const std::optional<std::string> filtered = FilterHeaderLine(line)) {
            bytes += *filtered + "\r\n";
        }
    }
    return bytes += static_cast<char>(kEndOfHeader);
}

/// In one write: a reader never sees half a header.
std::size_t COffFile::WriteHeader(const CTextFileHeader& header) {
    const std::string bytes = HeaderBytes(header);
    WriteFromHeader({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    return bytes.size();
}

void COffFile::WriteFromHeader(std::span<const std::uint8_t> bytes) {
    WriteDebugOutput("     [ PARLANE INFO ] WriteHeader START\n");
    WriteBytes(bytes);
    WriteDebugOutput("     [ PARLANE INFO ] WriteHeader END\n");
}

void COffFile::Close() {
    if (m_fileName.empty()) {
        return;
    }
    m_file.Close(); // when this raises, the name stays for Remove
    m_fileName.clear();
}

bool COffFile::Remove() {
    return m_fileName.empty() || RemovePlainFile(m_fileName);
}

} // namespace ruvo
