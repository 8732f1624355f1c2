// Paths as people type them.
#pragma once

#include "platform/full_path.h"

#include <string>

namespace ruvo {

/// The full path of a file that was typed, each name as the disk has it: what depends on a file's name (its
/// site, its task, what stands beside it) must not depend on how it was typed. Empty as FullPath.
inline std::string TypedPath(const std::string& typed) {
    return OwnSpelling(FullPath(typed));
}

} // namespace ruvo
