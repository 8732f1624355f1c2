// The debugger output stream. On POSIX RUVO_DEBUG_OUTPUT says where it goes: unset, nowhere; "stderr",
// standard error; any other text, the file of that name, appended. Bytes stay what they are, but for a
// terminal, which would take control characters for commands: it gets "." for each.
#pragma once

#include <string>

namespace ruvo {

/// Writes one message in one piece. (Where messages go to a stream, one without a line end gets it.) Never
/// fails.
void WriteDebugOutput(const std::string& text) noexcept;

} // namespace ruvo
