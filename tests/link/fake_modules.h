// The crypto provider as a test wants it: there, absent or incomplete.
#pragma once

#include <string>

namespace ruvo::test {

struct SModules {
    bool present = true;         ///< a load succeeds, with the built stand-in
    unsigned missingOrdinal = 0; ///< an entry point that is not found
    int loads = 0;
    int unloads = 0;
};
inline SModules g_modules;

} // namespace ruvo::test
