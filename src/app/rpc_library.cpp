#include "app/rpc_library.h"

#include "paths/path_utilities.h"
#include "platform/modules.h"

namespace ruvo {

std::optional<SMissingLibrary> FindMissingLibrary() {
    constexpr const char* kRpcLibrary = "oncrpc.dll";
    CModule library;
    if (library.Load(AbsoluteFromProgramFolder(kRpcLibrary))) {
        return std::nullopt;
    }
    return SMissingLibrary{std::string(kRpcLibrary) + " or one of its dependencies is missing. Closing RUVO.",
                           library.FailureText()};
}

} // namespace ruvo
