// Who may read and write a file, and how a file is exchanged as a whole without changing that: one that holds
// passwords, or one that others read. Path texts are Windows-form, as in files.h.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ruvo {

/// Whether every user of the machine may read the file, by its permissions and those of the folders above it;
/// none when the system does not tell by one simple mark, or there is no such file.
std::optional<bool> IsReadableByEveryone(const std::string& path);

enum class EOwnFile : std::uint8_t {
    Read,
    Missing,
    Unreadable,
    OfOthers, ///< somebody else may have written it, or put a link on the way to it
    NotTold,  ///< the system does not tell by one simple mark
};
/// Reads a small file that nobody but this user and root can have written: what it says may decide what a
/// program does.
EOwnFile ReadOwnFile(const std::string& path, std::string& bytes);

/// Where an operation of this header failed.
enum class EAccessFailure : std::uint8_t {
    None,
    NotFound,     ///< no such file or folder, or no regular file
    ForeignLink,  ///< a link on the way, or the pipe there, belongs to another user, or there are too many
                  ///< links
    NotWritable,  ///< the user may not write the file
    OtherNames,   ///< the file has another name, under which the old contents would live on
    Exists,       ///< a file that was to be new is there
    NotMade,      ///< the new file cannot be made in the folder
    InUse,        ///< somebody else exchanges the file right now
    Changed,      ///< the file is no longer the one, or says no longer what it said
    NotLikeOld,   ///< owner, group or permissions of the old file cannot be given to the new one
    NotWritten,   ///< the new bytes did not reach the disk, or the device that takes them
    NotExchanged, ///< the new file cannot take the old one's name
};

struct [[nodiscard]] SAccessResult {
    EAccessFailure failure = EAccessFailure::None;
    long systemCode = 0; ///< for SystemErrorText; 0 when the system has no say in it

    bool Good() const { return failure == EAccessFailure::None; }
};

/// Makes a new file with these bytes, durably; nothing stays behind on failure. Only its owner may read it,
/// on POSIX also the group `readers` when the folder belongs to it. On Windows it has the folder's
/// permissions.
SAccessResult WriteNewPrivateFile(const std::string& path, std::string_view bytes, std::string_view readers);

/// The pieces that differ from system to system.
namespace file_replacement {

/// A name for the new file beside an old one, and whether a name is such a one.
std::string NewName(const std::string& oldName);
bool IsNewName(std::string_view name, const std::string& oldName);

/// What is exchanged.
enum class EFileKind : std::uint8_t {
    Secret, ///< a regular file that has no other name, in a folder that the user may write
    Output, ///< may be missing, may have other names, which keep the old contents, or be a device or a pipe.
            ///< Its folder may be another user's: links on the way are followed when they are the user's own
            ///< or root's (Windows lets hardly anyone make links, and follows all).
};

/// The file that is to be exchanged, open; the user may write it. Links to it are followed once, and then it
/// stays the file in its folder.
class COldFile {
public:
    COldFile();
    COldFile(const COldFile&) = delete;
    COldFile& operator=(const COldFile&) = delete;
    ~COldFile(); ///< lets others in again

    SAccessResult Open(const std::string& path, EFileKind kind);
    bool IsThere() const;
    /// Whether it is no file, but something that takes bytes as they come.
    bool IsStream() const;
    /// Keeps other exchanges out; waits a little for one that goes on. If that one put another file in the
    /// place, this is the one from then on. Then removes what exchanges that were killed left behind.
    SAccessResult Lock();
    /// Whether this is still the file of that name, and says this.
    bool Holds(std::string_view bytes);

    struct SHandle;
    SHandle& Handle() { return *m_handle; }

private:
    SAccessResult OpenStream();

    std::string m_path;
    EFileKind m_kind = EFileKind::Secret;
    std::unique_ptr<SHandle> m_handle;
};

/// A file that did not exist before, worked on through what its making opened: whoever else may write the
/// folder can put another file in its place at any time, and must not steer what is written, or given away.
class CNewFile {
public:
    CNewFile();
    CNewFile(const CNewFile&) = delete;
    CNewFile& operator=(const CNewFile&) = delete;
    ~CNewFile(); ///< removes it, unless it is kept or took a place

    /// Makes a file that its owner alone may read, on POSIX also the group `readers` if that has the folder.
    SAccessResult Make(const std::string& path, std::string_view readers);
    /// Makes one beside the other, with its owner, group and permissions to read and write; with what the
    /// system gives to new files when there is no other. For a stream it is that one itself.
    SAccessResult MakeBeside(COldFile& old);
    SAccessResult Write(std::string_view bytes);
    /// Ends the writing: what was written is on the disk then.
    SAccessResult Flush();
    SAccessResult TakePlaceOf(COldFile& old);
    void Keep();
    const std::string& Path() const { return m_path; }

private:
    struct SHandle;
    std::string m_path;
    std::unique_ptr<SHandle> m_handle;
};

} // namespace file_replacement

/// The path of an output file without links, for a library that opens files itself: those on the way are
/// followed as for EFileKind::Output. The file may be missing. Both paths are in the system's own form.
SAccessResult ResolveOutputPath(const std::string& systemPath, std::string& resolved);

/// Whether the file can be exchanged as far as can be told without doing it: to be asked before a person is
/// asked for anything.
SAccessResult CanBeExchanged(const std::string& path);

/// Exchanges a file: the new bytes are written beside it, looked at if wanted, and then take its name in one
/// step. Before, after and on failure there is one whole file of that name; a crash may leave the other one
/// beside it as .NAME.XXXXXX.tmp, until the next exchange. Owner, group and permissions stay; a link stays a
/// link, and the file it leads to is exchanged. One exchange of a file goes on at a time.
class CFileExchange {
public:
    /// Writes the new bytes beside the file and flushes them.
    SAccessResult Prepare(const std::string& path, std::string_view bytes);
    /// Of the new file, between Prepare and Commit.
    const std::string& NewPath() const { return m_new.Path(); }
    /// Changed unless the old file still says `oldBytes`.
    SAccessResult Commit(std::string_view oldBytes);

private:
    file_replacement::COldFile m_old;
    file_replacement::CNewFile m_new; // goes first, while others are kept out
};

/// Writes a file that others read: bit by bit beside the old one, if there is one, which it replaces in one
/// step, as CFileExchange does. A device or a pipe takes the bytes as they come.
class CFileReplacement {
public:
    SAccessResult Open(const std::string& path);
    SAccessResult Write(std::string_view bytes);
    SAccessResult Commit();
    bool IsStream() const { return m_old.IsStream(); }
    bool HasOldFile() const { return m_old.IsThere() && !IsStream(); }

private:
    file_replacement::COldFile m_old;
    file_replacement::CNewFile m_new;
};

} // namespace ruvo
