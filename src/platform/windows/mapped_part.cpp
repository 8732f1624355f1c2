#include "platform/mapped_part.h"

namespace ruvo {

// A file that is mapped cannot be cut here, and a failure of the disk would be an exception of the system,
// which not every compiler can catch.
bool CMappedPart::Map(CFile& /*file*/, std::uint64_t /*offset*/, std::size_t /*size*/) noexcept {
    return false;
}

SFileResult CMappedPart::Store(std::uint64_t /*offset*/, std::span<const std::uint8_t> /*bytes*/) noexcept {
    return {EFileFailure::Other, 0}; // nothing is mapped
}

void CMappedPart::Unmap() noexcept {}

} // namespace ruvo
