// Full paths. Path texts are Windows-form everywhere in the program. On POSIX drive C: is the root "/",
// "\" and "/" are both separators on the way in, and "\" is in the result: /srv/ev is C:\srv\ev.
// Other drives and network names do not exist there.
#pragma once

#include <cstddef>
#include <string>

namespace ruvo {

/// Longest path text that the program forms or takes, its ending NUL included.
inline constexpr std::size_t kMaxPath = 260;

/// The full path of a text relative to the current folder, as the system's own full-path function forms it.
/// Empty when the text is empty or blank, or when the result would have kMaxPath characters or more.
std::string FullPath(const std::string& path);

/// The path with each name as the disk has it, as far as it exists: on Windows other letter cases and short
/// names (C:\PROGRA~1) lead to the same place. Unchanged where that would be too long for the programs, or in
/// letters that a file of theirs cannot hold; on POSIX always, where no other name leads there.
std::string OwnSpelling(const std::string& path);

/// Whether no file or folder can have that path because one of its names is a device's. Nothing is one on
/// POSIX.
bool NamesDevice(const std::string& path);

/// A full path as the system's own programs write it: /srv/ev for C:\srv\ev on POSIX, itself on Windows.
/// Empty when nothing can exist there.
std::string SystemPath(const std::string& fullPath);

/// A path as it is shown to people: in the system's own form where it has one, else unchanged.
std::string DisplayPath(const std::string& path);

} // namespace ruvo
