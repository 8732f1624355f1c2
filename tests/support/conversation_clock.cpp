// A clock for whole programs, to be loaded before the C library (LD_PRELOAD): it shows RUVO_CLOCK_BEGIN, in
// seconds since 1970, and goes on by one second for each 100 bytes of the file RUVO_CLOCK_TRACE, the trace of
// the simulated comms server. So a visit takes as long as its conversations, and as long on every machine.
#include <sys/stat.h>

#include <cstdlib>
#include <ctime>

namespace {

constexpr std::time_t kBytesOfSecond = 100;

std::time_t SizeOf(const char* path) {
    struct stat status = {};
    return path != nullptr && stat(path, &status) == 0 ? static_cast<std::time_t>(status.st_size) : 0;
}

} // namespace

extern "C" std::time_t time(std::time_t* result) noexcept {
    const char* const begin = std::getenv("RUVO_CLOCK_BEGIN");
    const std::time_t now = (begin == nullptr ? 0 : std::strtoll(begin, nullptr, 10)) +
                            SizeOf(std::getenv("RUVO_CLOCK_TRACE")) / kBytesOfSecond;
    if (result != nullptr)
        *result = now;
    return now;
}
