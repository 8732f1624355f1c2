// The system's handles of the standard streams.
#pragma once

#include "platform/terminal.h"
#include "platform/windows/system.h"

#include <array>

namespace ruvo {

inline HANDLE StandardHandle(EStandardStream stream) noexcept {
    constexpr std::array<DWORD, 3> kHandles{STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
    return GetStdHandle(kHandles[static_cast<std::size_t>(stream)]);
}

} // namespace ruvo
