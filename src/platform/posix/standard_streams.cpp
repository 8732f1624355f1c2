#include "platform/standard_streams.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace ruvo {

void OccupyClosedStandardStreams() noexcept {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (fcntl(stream, F_GETFD) == -1 && errno == EBADF) {
            // The lowest free number is this one: those before it are taken. Opened the wrong way round, it
            // takes and returns nothing.
            static_cast<void>(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

void IgnoreClosedPipes() noexcept {
    signal(SIGPIPE, SIG_IGN);
}

} // namespace ruvo
