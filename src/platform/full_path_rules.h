// The text rules of full paths, the same on every system: dots resolved, separators made one, ends trimmed.
#pragma once

#include <string>
#include <string_view>

namespace ruvo {

/// Forms the full path of `path` against `currentFolder` (itself a full path such as "C:\work\dir"), by the
/// rules of the Windows full-path function. Empty when there is nothing to form. Touches no disk.
std::string FormFullPath(std::string_view path, std::string_view currentFolder);

/// A path of a server, also in its long form (\\?\UNC\server\share), with the names of server and share in
/// small letters: no disk has these names, and all their spellings mean the same. Any other path unchanged.
std::string WithSmallShare(std::string path);

/// Whether one of the path's names is that of a Windows device (NUL, COM1), which it is with an ending, too;
/// or the path is a device's in the form that full paths give it.
bool HasDeviceName(std::string_view path);

} // namespace ruvo
