// The state of an open CFile, for the sources that share it.
#pragma once

#include "platform/file.h"
#include "platform/windows/system.h"

namespace ruvo {

struct CFile::SHandle {
    HANDLE file = nullptr; ///< null when closed: every call then fails with "invalid handle"
};

} // namespace ruvo
