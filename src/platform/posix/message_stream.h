// Messages written to a stream, each in one piece.
#pragma once

#include "base/text.h"
#include "platform/posix/pipe_signal.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <unistd.h>

namespace ruvo {

// Each call is a message of its own; in a stream only the line end keeps it apart from the next.
inline std::string MessageFor(int descriptor, std::string_view text) {
    std::string message(text);
    message += text.ends_with('\n') ? "" : "\n";
    if (isatty(descriptor) == 1) {
        std::replace_if(message.begin(), message.end() - 1, IsControlCharacter, '.');
    }
    return message;
}

// One write is one piece in an appended file, even when other processes write to it; the loop is for a pipe
// that takes less.
inline void WriteMessage(int descriptor, std::string_view text) {
    const CPipeSignalBlock hold; // a message without a reader is lost, which is no reason to end
    while (!text.empty()) {
        const ssize_t put = write(descriptor, text.data(), text.size());
        if (put > 0) {
            text.remove_prefix(static_cast<std::size_t>(put));
        } else if (errno != EINTR) {
            return;
        }
    }
}

} // namespace ruvo
