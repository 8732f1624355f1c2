// The buffer of a stream that leads to a console.
#pragma once

#include "platform/terminal.h"

#include <memory>
#include <streambuf>

namespace ruvo {

/// Between a standard stream in UTF-8 and a console that takes another encoding, or knows no "\x1B[K" (erase
/// to the line's end). Null where the stream's own buffer will do: for files, pipes and the terminals of
/// POSIX.
std::unique_ptr<std::streambuf> ConsoleBuffer(EStandardStream stream);

} // namespace ruvo
