// The two forms of a path: Windows-form text above the seam, the system's own below it.
#pragma once

#include <optional>
#include <string>

namespace ruvo {

/// The system's path for a Windows-form text: "C:\srv\ev" and "/srv/ev" are /srv/ev, "a\b" and "C:a\b" are
/// a/b in the current folder. None for an empty text, another drive or a network name: nothing can exist
/// there.
std::optional<std::string> ToNativePath(const std::string& path);

/// The Windows-form text of the system's path.
std::string FromNativePath(const std::string& native);

} // namespace ruvo
