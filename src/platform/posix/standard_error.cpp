#include "platform/standard_error.h"

#include "platform/posix/message_stream.h"

namespace ruvo {

void WriteStandardError(std::string_view line) noexcept {
    try {
        WriteMessage(STDERR_FILENO, MessageFor(STDERR_FILENO, line));
    } catch (...) { // NOLINT(bugprone-empty-catch): out of memory, and there is no other place
    }
}

} // namespace ruvo
