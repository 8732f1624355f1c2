// A comms server of another interface version: nothing behind it may be called.
#include "link/seam/server_module.h"

extern "C" [[gnu::visibility("default")]] const ruvo::SServerModule* P32lsModule() {
    static const ruvo::SServerModule module{ruvo::kServerInterfaceVersion + 1, nullptr, nullptr};
    return &module;
}
