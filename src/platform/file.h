// One open file. Path texts are Windows-form ("C:\srv\ev"); see full_path.h for what that means on POSIX.
// Nothing here throws or logs; a failure is a value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace ruvo {

/// Why a file operation failed, as far as callers distinguish failures.
enum class EFileFailure : std::uint8_t {
    None,
    Other,
    NotFound,         ///< no such file
    BadPath,          ///< a folder of the path is missing or is no folder
    TooManyOpenFiles, ///< the process or the system has no handle left
    AccessDenied,
    BadDescriptor, ///< the handle is not (or no longer) valid
    SharingViolation,
    DiskFull, ///< also a quota or a file-size limit
    NotPlain, ///< a plain file in a plain folder was asked for, and one of them is a link or something else
    Exists,   ///< what was to be made is there already
};

/// Outcome of a file operation: what kind of failure, and the system's own code for it.
struct [[nodiscard]] SFileResult {
    EFileFailure failure = EFileFailure::None;
    long systemCode = 0;

    bool Good() const { return failure == EFileFailure::None; }
};

/// The system's text for one of its error codes, without a line end.
std::string SystemErrorText(long systemCode);

/// How to open a file. The file is always opened in binary mode.
struct SOpenMode {
    bool read = false;
    bool write = false;
    bool create = false;   ///< make the file when it is missing
    bool truncate = false; ///< cut an existing file to nothing
    /// The file is a regular one in a folder, and neither of them a link, even if others change that
    /// meanwhile; links that lead to the folder's own place are followed.
    bool plain = false;
    /// With `create`: this opening makes the file, and fails when there is one. Links are followed all the
    /// same, unless it is `plain`.
    bool exclusive = false;
    /// Others may remove or rename the file while it is open, which some systems always allow.
    bool removable = false;
    /// With `create` and `plain`: others may not read the file that is made, where the system tells by a
    /// simple mark.
    bool ownerOnly = false;
};

/// The outcome of a request for a file's lock.
enum class EFileLock : std::uint8_t {
    Taken,
    HeldByAnother,
    Unknown, ///< the file system knows no locks, or does not say
};

enum class ESeekOrigin : std::uint8_t { Start = 0, Current = 1, End = 2 };

/// One open file, unbuffered. Not copyable; the destructor closes without reporting.
class CFile {
public:
    CFile();
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    ~CFile();

    SFileResult Open(const std::string& path, SOpenMode mode);
    bool IsOpen() const;

    /// Length in bytes; the position is kept.
    SFileResult GetLength(std::uint64_t& length);
    SFileResult Seek(std::int64_t offset, ESeekOrigin origin, std::uint64_t& position);
    /// Reads at most the span's size; `count` is what came, 0 at the end of the file.
    SFileResult Read(std::span<std::uint8_t> buffer, std::size_t& count);
    /// Writes at the position. On failure `count` says how many bytes reached the file all the same.
    SFileResult Write(std::span<const std::uint8_t> bytes, std::size_t& count);
    /// Cuts (or extends with zeros) to `length` bytes.
    SFileResult SetLength(std::uint64_t length);
    /// Returns when the bytes written are on the disk, not just in the system's cache. A file system that
    /// knows no such thing counts as good.
    SFileResult FlushToDisk();
    /// The same for all that it takes to read what was written, but not for the file's times, nor for a cut:
    /// most writes in place of others then cost one turn of the disk instead of several.
    SFileResult FlushWritten();
    /// Asks for the file's one lock, without waiting; closing releases it. The file must be open for
    /// writing. Each opening counts for itself, also within one process. The lock does not keep out a
    /// program that does not ask for it, such as a reader.
    EFileLock TryLock();
    /// Whether another opening has the lock, without asking for it; none when the file system does not say.
    /// The file may be open for reading alone.
    std::optional<bool> IsLocked();
    /// True when the path leads to this very file; it may have been removed or renamed since the opening.
    bool IsAt(const std::string& path) const;
    /// Removes the file that an exclusive opening has made, wherever links led it, unless something is in it.
    /// The caller holds the lock; nothing but closing is left to do then.
    bool RemoveIfEmpty();
    /// Closes; a closed file stays closed whatever the result.
    SFileResult Close();

private:
    friend class CMappedPart;
    struct SHandle;
    std::unique_ptr<SHandle> m_handle;
};

} // namespace ruvo
