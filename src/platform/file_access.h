// Who may read and write a file, and how a file is exchanged as a whole without changing that. For files that
// hold passwords. Path texts are Windows-form, as in files.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ruvo {

/// Whether every user of the machine may read the file by its own permissions (those of its folders aside);
/// none when the system does not tell by one simple mark, or there is no such file.
std::optional<bool> IsReadableByEveryone(const std::string& path);

/// Where an operation of this header failed.
enum class EAccessFailure : std::uint8_t {
    None,
    NotFound,     ///< no such file, or no regular one
    NotWritable,  ///< the user may not write the file
    OtherNames,   ///< the file has another name, under which the old contents would live on
    Exists,       ///< a file that was to be new is there
    NotMade,      ///< the new file cannot be made in the folder
    NotLikeOld,   ///< owner, group or permissions of the old file cannot be given to the new one
    NotWritten,   ///< the new bytes did not reach the disk
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

/// Exchanges a file: the new bytes are written beside it, looked at if wanted, and then take its name in one
/// step. Before, after and on failure there is one whole file of that name; a crash may leave the other one
/// beside it. Owner, group and permissions stay; a link stays a link, and the file it leads to is exchanged.
class CFileExchange {
public:
    CFileExchange() = default;
    CFileExchange(const CFileExchange&) = delete;
    CFileExchange& operator=(const CFileExchange&) = delete;
    ~CFileExchange(); ///< removes the new file unless it took the place

    /// Writes the new bytes beside the file and flushes them.
    SAccessResult Prepare(const std::string& path, std::string_view bytes);
    /// Of the new file, between Prepare and Commit.
    const std::string& NewPath() const { return m_newPath; }
    SAccessResult Commit();

private:
    std::string m_path; // behind any links
    std::string m_newPath;
};

/// The pieces that differ from system to system.
namespace file_access {

/// The file behind any links, when it can be exchanged: a regular one, that has no other name and that the
/// user may write.
SAccessResult FindExchangeable(const std::string& path, std::string& found);
/// Makes an empty file that only its owner may read, unless it is there.
SAccessResult MakeNew(const std::string& path, std::string_view readers);
/// Gives an empty new file the owner, group and permissions of another.
SAccessResult MakeAlike(const std::string& pattern, const std::string& path);
/// Gives the file another's name, in one step.
SAccessResult MoveOver(const std::string& newPath, const std::string& path);

} // namespace file_access

} // namespace ruvo
