#include "platform/process.h"

#include <unistd.h>

namespace ruvo {

std::uint64_t ProcessNumber() noexcept {
    return static_cast<std::uint64_t>(getpid());
}

} // namespace ruvo
