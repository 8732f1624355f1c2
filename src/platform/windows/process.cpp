#include "platform/process.h"

#include "platform/windows/system.h"

namespace ruvo {

std::uint64_t ProcessNumber() noexcept {
    return GetCurrentProcessId();
}

} // namespace ruvo
