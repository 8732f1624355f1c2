#include "log/log_reserve.h"

#include "platform/standard_error.h"
#include "platform/trace.h"

#include <cstddef>
#include <memory>
#include <new>

namespace ruvo {

namespace {

constexpr std::size_t kReserveSize = std::size_t{32} * 1024; // a line with its paths, several times over

std::unique_ptr<std::byte[]>& Reserve() {
    static std::unique_ptr<std::byte[]> reserve;
    return reserve;
}

} // namespace

void ReleaseLogReserve() noexcept {
    Reserve().reset();
}

void KeepLogReserve() noexcept {
    if (Reserve() == nullptr) {
        Reserve().reset(new (std::nothrow) std::byte[kReserveSize]);
    }
}

void ReportNoMemoryForLine() noexcept {
    TraceError("A line of the error log is lost: no memory for it");
    WriteStandardError("ruvo: a line of the error log is lost: no memory for it");
}

} // namespace ruvo
