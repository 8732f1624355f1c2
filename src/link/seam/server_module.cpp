#include "link/seam/server_module.h"

#include "link/seam/server_failure.h"
#include "platform/full_path.h"
#include "platform/modules.h"
#include "platform/registry.h"

namespace ruvo {

SServerPlace FindServerModule() {
    constexpr const char* kClassKey = "CLSID\\{9A69E99F-E86F-455D-B971-355C1139963E}";
    constexpr std::size_t kPathCapacity = 4096;
    for (const ERegistryRoot root : {ERegistryRoot::CurrentUser, ERegistryRoot::LocalMachine}) {
        const auto path = ReadRegistryValue(root, kClassKey, "InprocServer32", kPathCapacity);
        if (path && !path->empty()) {
            return {FullPath(path->substr(0, path->find('\0'))), RegistryPlace(root)};
        }
    }
    return {CodeFolder() + "\\p32ls.dll", {}};
}

std::string ExplainServerFailure() {
    const SServerPlace place = FindServerModule();
    const std::string user = RegistryPlace(ERegistryRoot::CurrentUser);
    const std::string source = place.registry.empty() ? "beside the program, since none is named in " +
                                                            (user.empty() ? user : user + " or ") +
                                                            RegistryPlace(ERegistryRoot::LocalMachine)
                                                      : "named in " + place.registry;
    CModule module;
    std::string words;
    if (place.path.empty()) {
        words = "no path that a file can have";
    } else if (!module.Load(place.path)) {
        words = module.FailureText(); // which begins with the path
    } else {
        const auto entry = reinterpret_cast<ServerEntryPoint>(module.FindEntry(kServerEntryPoint));
        const SServerModule* const table = entry == nullptr ? nullptr : entry();
        words = SystemModulePath(place.path) + ": ";
        words += table == nullptr ? "no comms server: it has no entry point " + std::string(kServerEntryPoint)
                 : table->interfaceVersion != kServerInterfaceVersion
                     ? "made for interface version " + std::to_string(table->interfaceVersion) + ", not " +
                           std::to_string(kServerInterfaceVersion)
                     : "loaded, but it refused to start";
    }
    return words + " (" + source + ")";
}

} // namespace ruvo
