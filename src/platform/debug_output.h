// The debugger output stream. On POSIX RUVO_DEBUG_OUTPUT says where it goes: unset, nowhere; "stderr",
// standard error; any other text, the file of that name, appended. Bytes are written
// unchanged, except to a terminal, which would execute control characters: each becomes ".".
#pragma once

#include <string>

namespace ruvo {

/// Writes one message in one piece. (Where messages go to a stream, one without a line end gets it.) Never
/// fails.
void WriteDebugOutput(const std::string& text) noexcept;

} // namespace ruvo
