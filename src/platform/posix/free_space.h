// The free space that a file system states.
#pragma once

#include "platform/files.h"

#include <algorithm>
#include <limits>
#include <sys/statvfs.h>

namespace ruvo {

/// A file system whose total is 0 states no figure: it has a limit that it does not report, or none.
inline SFreeSpace FreeSpaceFrom(const struct statvfs& status) {
    const std::uint64_t size = std::max<std::uint64_t>(status.f_frsize, 1);
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max() / size;
    SFreeSpace room;
    if (status.f_blocks != 0) {
        room.bytes = std::min<std::uint64_t>(status.f_bavail, most) * size;
    }
    if (status.f_files != 0) {
        room.files = status.f_favail;
    }
    return room;
}

} // namespace ruvo
