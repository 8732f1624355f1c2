#include "platform/debug_output.h"

#include "base/text.h"
#include "platform/environment.h"
#include "platform/posix/file_size_signal.h"
#include "platform/posix/native_path.h"
#include "platform/posix/pipe_signal.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace ruvo {

namespace {

constexpr mode_t kNewFileMode = 0666; // what the user's mask leaves of it

// Each call is a message of its own; in a stream only the line end keeps it apart from the next.
std::string MessageFor(int descriptor, const std::string& text) {
    std::string message = text.ends_with('\n') ? text : text + "\n";
    if (isatty(descriptor) == 1) {
        std::replace_if(message.begin(), message.end() - 1, IsControlCharacter, '.');
    }
    return message;
}

// One write is one piece in an appended file, whoever else writes to it; the loop is for a pipe that takes
// less.
void WriteMessage(int descriptor, const std::string& message) {
    std::string_view text = message;
    const CPipeSignalHold hold; // what nobody reads is lost, and no reason to end
    while (!text.empty()) {
        const ssize_t put = write(descriptor, text.data(), text.size());
        if (put > 0) {
            text.remove_prefix(static_cast<std::size_t>(put));
        } else if (errno != EINTR) {
            return;
        }
    }
}

void AppendToFile(const std::string& path, const std::string& text) {
    const auto native = ToNativePath(path);
    // O_NONBLOCK: a pipe that nobody reads must not stop the program.
    constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    const int descriptor = native ? open(native->c_str(), kFlags, kNewFileMode) : -1;
    if (descriptor != -1) {
        IgnoreFileSizeSignal();
        WriteMessage(descriptor, MessageFor(descriptor, text));
        close(descriptor);
    }
}

} // namespace

void WriteDebugOutput(const std::string& text) noexcept {
    try {
        const auto target = EnvironmentValue("RUVO_DEBUG_OUTPUT");
        if (target == "stderr") {
            WriteMessage(STDERR_FILENO, MessageFor(STDERR_FILENO, text));
        } else if (target) {
            AppendToFile(*target, text);
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): out of memory, and a trace line is not worth a failure
    }
}

} // namespace ruvo
