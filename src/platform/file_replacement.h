// Replacing a file as a whole while keeping its owner and permissions: a file that holds passwords, or an
// output file that other users read. Path texts are Windows-form, as in files.h.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace ruvo {

/// Why an operation of this header failed.
enum class EAccessFailure : std::uint8_t {
    None,
    NotFound,      ///< no such file or folder, or no regular file
    UntrustedLink, ///< a link in the path, or the pipe itself, belongs to another user, or too many links
    NotWritable,   ///< the user may not write the file
    HardLinked,    ///< the file has another name, which would keep the old contents
    Exists,        ///< a file of the new file's name exists
    NotCreated,    ///< the new file cannot be created in the folder
    InUse,         ///< another process is replacing the file
    Changed,       ///< the file, or its contents, changed meanwhile
    PermissionsNotKept, ///< owner, group or permissions of the old file cannot be set on the new one
    NotWritten,         ///< the new bytes did not reach the disk or the device
    NotReplaced,        ///< the new file cannot be renamed to the old one's name
};

struct [[nodiscard]] SAccessResult {
    EAccessFailure failure = EAccessFailure::None;
    long systemCode = 0; ///< for SystemErrorText; 0 when the system refused nothing

    bool Good() const { return failure == EAccessFailure::None; }
};

/// Creates a new file with these bytes, durably; a failure leaves no file. Only its owner may read it, on
/// POSIX also the group `readers` if that is the folder's group, on Windows the system and the
/// administrators.
SAccessResult WriteNewPrivateFile(const std::string& path, std::string_view bytes, std::string_view readers);

/// The pieces that differ from system to system.
namespace file_replacement {

/// A name for the new file beside an old one, and whether a name has that form.
std::string TemporaryName(const std::string& oldName);
bool IsTemporaryName(std::string_view name, const std::string& oldName);

/// What kind of file is replaced.
enum class EFileKind : std::uint8_t {
    Secret, ///< a regular file without another name, in a folder that the user may write
    Output, ///< may be missing, have other names (which keep the old contents), or be a device or a pipe. Its
            ///< folder may be another user's: only the user's own links and root's are followed (Windows lets
            ///< few users create links, and follows all).
};

/// The file that is to be replaced, open; the user may write it. Links to it are followed once, on opening.
class COldFile {
public:
    COldFile();
    COldFile(const COldFile&) = delete;
    COldFile& operator=(const COldFile&) = delete;
    ~COldFile(); ///< unlocks it

    SAccessResult Open(const std::string& path, EFileKind kind);
    bool Exists() const;
    /// Whether it is a device or a pipe, which cannot be replaced and takes the bytes as they come.
    bool IsStream() const;
    /// Locks out other replacements, after a short wait for one under way; if that one replaced the file, the
    /// new file is opened instead. Then removes what killed replacements left.
    SAccessResult Lock();
    /// Whether this is still the file of that name, and holds these bytes.
    bool Contains(std::string_view bytes);

    struct SHandle;
    SHandle& Handle() { return *m_handle; }

private:
    SAccessResult OpenStream();

    std::string m_path;
    EFileKind m_kind = EFileKind::Secret;
    std::unique_ptr<SHandle> m_handle;
};

/// A file that did not exist before. Everything is done through the descriptor that created it: another user
/// who may write the folder can put another file in its place at any time, and must not redirect what is
/// written or whose permissions change.
class CNewFile {
public:
    CNewFile();
    CNewFile(const CNewFile&) = delete;
    CNewFile& operator=(const CNewFile&) = delete;
    ~CNewFile(); ///< removes it, unless Keep or Replace was called

    /// Creates a file that only its owner may read, on POSIX also the group `readers` if it is the folder's.
    SAccessResult Create(const std::string& path, std::string_view readers);
    /// Creates one beside the old file, with the old file's owner, group, and permissions to read and write;
    /// with the system's defaults when there is no old file. A stream itself is written instead.
    SAccessResult CreateBeside(COldFile& old);
    SAccessResult Write(std::string_view bytes);
    /// Ends the writing; returns when the bytes are on the disk.
    SAccessResult Flush();
    SAccessResult Replace(COldFile& old);
    void Keep();
    const std::string& Path() const { return m_path; }

private:
    struct SHandle;
    std::string m_path;
    std::unique_ptr<SHandle> m_handle;
};

} // namespace file_replacement

/// The path of an output file with its links resolved, for a library that opens files itself: links are
/// followed as for EFileKind::Output. The file may be missing. Both paths are in the system's own form.
SAccessResult ResolveOutputPath(const std::string& systemPath, std::string& resolved);

/// Whether the file can be replaced, as far as a check without writing shows. For use before a person is
/// asked for input.
SAccessResult CheckReplaceable(const std::string& path);

/// Replaces a file that holds passwords: the new bytes are written beside it, can be checked there, and are
/// renamed over it. At every moment there is one complete file of that name; a crash may leave the other one
/// beside it as .NAME.XXXXXX.tmp, until the next replacement. Owner, group and permissions stay. A link stays
/// a link; the file it leads to is replaced. One replacement of a file runs at a time.
class CSecretFileReplacement {
public:
    /// Writes the new bytes beside the file and flushes them.
    SAccessResult Prepare(const std::string& path, std::string_view bytes);
    /// Of the new file, between Prepare and Commit.
    const std::string& NewPath() const { return m_new.Path(); }
    /// Fails with Changed unless the old file still holds `oldBytes`.
    SAccessResult Commit(std::string_view oldBytes);

private:
    file_replacement::COldFile m_old;
    file_replacement::CNewFile m_new; // destroyed first, while the old file is still locked
};

/// Writes an output file piece by piece beside the old one, if there is one, and replaces that in one step as
/// CSecretFileReplacement does. A device or a pipe takes the bytes as they come.
class COutputFileReplacement {
public:
    SAccessResult Open(const std::string& path);
    SAccessResult Write(std::string_view bytes);
    SAccessResult Commit();
    bool IsStream() const { return m_old.IsStream(); }
    bool HasOldFile() const { return m_old.Exists() && !IsStream(); }

private:
    file_replacement::COldFile m_old;
    file_replacement::CNewFile m_new;
};

} // namespace ruvo
