#include "platform/debug_output.h"

#include "platform/environment.h"
#include "platform/posix/file_size_signal.h"
#include "platform/posix/message_stream.h"
#include "platform/posix/native_path.h"

#include <fcntl.h>
#include <unistd.h>

namespace ruvo {

namespace {

constexpr mode_t kNewFileMode = 0666; // what the user's mask leaves of it

void AppendToFile(const std::string& path, const std::string& text) {
    const auto native = ToNativePath(path);
    // O_NONBLOCK: a pipe without a reader must not stop the program.
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
