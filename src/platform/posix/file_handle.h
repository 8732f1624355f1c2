// The state of an open CFile, for the sources that share it.
#pragma once

#include "platform/file.h"

#include <sys/types.h>

namespace ruvo {

struct CFile::SHandle {
    int descriptor = -1;
    // The file itself, which stays the same one as long as it is open.
    dev_t device = 0;
    ino_t number = 0;
    std::string madePath; ///< the system's path of the file, when an exclusive opening has made it
};

/// Makes the file of the system's path by open() with O_EXCL in its flags; -1 and errno as from there. The
/// system refuses every link here, so one that leads nowhere is followed step by step: `native` becomes the
/// path of the file made.
int MakeNewFile(std::string& native, int flags, unsigned int mode);

} // namespace ruvo
