// The output file of the tool family's text files. Once a file is open, failures are raised as
// CFileException.
#pragma once

#include "dayfile/text_file_header.h"
#include "platform/files.h"

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace ruvo {

/// Causes of a CFileException; the numbers are what error lists carry.
enum class EFileCause : int {
    None = 0,
    Generic = 1,
    FileNotFound = 2,
    BadPath = 3,
    TooManyOpenFiles = 4,
    AccessDenied = 5,
    InvalidFile = 6,
    SharingViolation = 11,
    DiskFull = 13,
};

/// A failed file operation: its cause, the system's error code and the file's path.
class CFileException : public std::runtime_error {
public:
    CFileException() : CFileException(EFileCause::None, 0, {}) {}
    CFileException(EFileCause cause, long systemCode, const std::string& path);
    /// With the reason in words, where the system has given none.
    CFileException(EFileCause cause, const std::string& path, const std::string& why);

    EFileCause GetCause() const { return m_cause; }
    long GetSystemCode() const { return m_systemCode; }
    const std::string& GetPath() const { return m_path; }

private:
    EFileCause m_cause;
    long m_systemCode;
    std::string m_path;
};

/// A file whose operations raise CFileException; unbuffered.
class CStdioFileThrower {
public:
    /// The one operation that does not raise: a file that cannot be opened is an everyday result.
    SFileResult Open(const std::string& path, SOpenMode mode);
    /// A write that reaches the file in part only raises too.
    void Write(std::span<const std::uint8_t> bytes);
    void WriteString(std::string_view text);
    std::uint64_t GetLength();
    std::uint64_t Seek(std::int64_t offset, ESeekOrigin origin);
    void FlushToDisk();
    void Close();
    CFile& File() { return m_file; }
    /// Closes without raising.
    void Abort() noexcept;

    const std::string& GetPath() const { return m_path; }

private:
    void Require(SFileResult result) const;

    CFile m_file;
    std::string m_path;
};

/// Output file wrapper: opens, writes lines, headers and bytes, closes.
class COffFile {
public:
    COffFile() = default;
    COffFile(const COffFile&) = delete;
    COffFile& operator=(const COffFile&) = delete;
    virtual ~COffFile() = default;

    /// Opens in binary a file that is no link, in a folder that is none; the position is the start of the
    /// file. On failure `failure` receives the cause.
    bool Open(const std::string& path, SOpenMode mode, CFileException& failure);
    std::uint64_t GetLength() { return m_file.GetLength(); }
    std::uint64_t Seek(std::int64_t offset, ESeekOrigin origin) { return m_file.Seek(offset, origin); }
    void WriteBytes(std::span<const std::uint8_t> bytes) { m_file.Write(bytes); }
    /// The text's bytes, then CR LF; returns their number.
    std::size_t WriteLine(std::string_view text);
    /// The header's lines and the end byte; returns the number of bytes. Lines that begin with "Q7_" are for
    /// the tools' makers: but for the language line they are written in engineer mode only.
    std::size_t WriteHeader(const CTextFileHeader& header);
    /// The bytes that WriteHeader writes.
    static std::string HeaderBytes(const CTextFileHeader& header);
    /// Writes the bytes of a header and of what follows it at once.
    void WriteFromHeader(std::span<const std::uint8_t> bytes);
    /// Returns when everything written is on the disk.
    void FlushToDisk() { m_file.FlushToDisk(); }
    /// For what raises nothing: locks, and cutting.
    CFile& File() { return m_file.File(); }
    /// Does nothing when no file is open through this object.
    void Close();
    void Abort() noexcept { m_file.Abort(); }
    /// Deletes the file from disk; false when it may still be there.
    bool Remove();

private:
    std::string m_fileName; ///< empty while no file is open through this object
    CStdioFileThrower m_file;
};

} // namespace ruvo
