// Files and folders by their paths. Path texts are Windows-form ("C:\srv\ev"); see full_path.h for what that
// means on POSIX. Nothing here throws or logs; a failure is a value.
#pragma once

#include "platform/file.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ruvo {

enum class EPathKind : std::uint8_t { Missing, File, Folder };

/// What kind of entry the path names; Missing when it cannot be examined at all.
EPathKind GetPathKind(const std::string& path);
/// True when nothing has that name, or a folder of the path is missing or is none; false when that is not
/// known.
[[nodiscard]] bool IsAbsent(const std::string& path);
/// True when the path itself is a link, whatever it leads to.
bool IsLink(const std::string& path);
/// Whether a file has the mark with which the system lets nobody write it. (POSIX has none beside
/// permissions.)
bool IsMarkedReadOnly(const std::string& path);
/// What a disk still has room for; none where the system does not say.
struct SFreeSpace {
    std::optional<std::uint64_t> bytes;
    std::optional<std::uint64_t> files; ///< and folders
};
/// Room on the disk that holds the path, or its nearest folder that exists.
SFreeSpace FreeSpace(const std::string& path);
/// True when the path is the root of a removable, fixed, remote, CD-ROM or RAM drive.
bool IsDriveRoot(const std::string& path);

/// Whether this user may make a file, or a folder, in the folder; nothing is made to find out.
SFileResult CanMakeEntryIn(const std::string& folder, EPathKind entry);

/// Makes one folder; its parent must exist.
SFileResult MakeFolder(const std::string& path);
/// Removes one folder, which must be empty.
bool RemoveEmptyFolder(const std::string& path);
/// Deletes one file.
bool RemoveFile(const std::string& path);
/// The same, in a folder that is no link.
bool RemovePlainFile(const std::string& path);
/// Gives one file another name in its folder, in place of a file that may have it.
bool RenameFile(const std::string& from, const std::string& to);
/// Copies a file; fails when the destination exists.
bool CopyToNewFile(const std::string& source, const std::string& destination);
/// Makes an empty file with a unique name that begins with `prefix` in `folder`; its path, or empty on
/// failure.
std::string MakeUniqueFile(const std::string& folder, const std::string& prefix);
/// Makes the folder's own entries (a file just created in it) durable, where the system needs that. False
/// only when the disk has failed to, or the process cannot ask it now (descriptors or memory are used up): a
/// file system that cannot flush a folder, or a folder that may not be opened, has done what it can.
bool FlushFolder(const std::string& folder);

struct SFolderEntry {
    std::string name;
    bool isFolder = false; ///< a link to a folder is no folder here: it is never followed
    bool isFile = false;   ///< a regular one, and no link to one
};
/// Lists a folder without "." and ".."; false when it cannot be read.
bool ListFolder(const std::string& folder, std::vector<SFolderEntry>& entries);

/// The files and folders that a typed path with * or ? in its last name stands for, in the order of their
/// names; the path itself if it has neither, or nothing matches. (On POSIX it is the shell that replaces
/// patterns, and the path is always returned as it is.)
std::vector<std::string> FilesOfPattern(const std::string& typed);

/// The folder for temporary files, ending in a backslash; empty when there is none.
std::string TemporaryFolder();
/// The working directory; empty when it cannot be had.
std::string CurrentFolder();
bool SetCurrentFolder(const std::string& folder);

} // namespace ruvo
