// This process.
#pragma once

#include <cstdint>

namespace ruvo {

/// The number that the system knows this process by.
std::uint64_t ProcessNumber() noexcept;

} // namespace ruvo
