// A relay's text as the system writes text.
#pragma once

#include <string>
#include <string_view>

namespace ruvo {

/// A relay's text in the system's own narrow encoding (UTF-8 on POSIX, code page 1252 on Windows), as it may
/// stand in a path or a log line: control characters become blanks.
std::string NativeRelayText(std::string_view cp1252);

} // namespace ruvo
