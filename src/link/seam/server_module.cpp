#include "link/seam/server_module.h"

#include "link/seam/class_id.h"
#include "link/seam/server_failure.h"
#include "platform/full_path.h"
#include "platform/modules.h"
#include "platform/registry.h"

namespace ruvo {

SServerPlace FindServerModule() {
    constexpr std::size_t kPathCapacity = 4096;
    for (const ERegistryRoot root : {ERegistryRoot::CurrentUser, ERegistryRoot::LocalMachine}) {
        const auto path = ReadRegistryValue(root, ServerClassKey(), "InprocServer32", kPathCapacity);
        if (path && !path->empty()) {
            return {FullPath(path->substr(0, path->find('\0'))), RegistryPlace(root)};
        }
    }
    return {CodeFolder() + "\\p32ls.dll", {}};
}

SLoadedServer LoadServerModule(const std::string& path, CModule& module) {
    if (path.empty()) {
        return {nullptr, "no path that a file can have"};
    }
    if (!module.Load(path)) {
        return {nullptr, module.FailureText()}; // which begins with the path
    }
    const auto entry = reinterpret_cast<ServerEntryPoint>(module.FindEntry(kServerEntryPoint));
    const SServerModule* const table = entry == nullptr ? nullptr : entry();
    if (table == nullptr) {
        return {nullptr,
                SystemModulePath(path) + ": no comms server: it has no entry point " + kServerEntryPoint};
    }
    if (table->interfaceVersion != kServerInterfaceVersion) {
        return {nullptr, SystemModulePath(path) + ": made for interface version " +
                             std::to_string(table->interfaceVersion) + ", not " +
                             std::to_string(kServerInterfaceVersion)};
    }
    return {table, {}};
}

std::string ExplainServerFailure() {
    const SServerPlace place = FindServerModule();
    const std::string user = RegistryPlace(ERegistryRoot::CurrentUser);
    const std::string source = place.registry.empty() ? "beside the program, since none is named in " +
                                                            (user.empty() ? user : user + " or ") +
                                                            RegistryPlace(ERegistryRoot::LocalMachine)
                                                      : "named in " + place.registry;
    CModule module;
    const SLoadedServer loaded = LoadServerModule(place.path, module);
    const std::string words = loaded.table == nullptr
                                  ? loaded.failure
                                  : SystemModulePath(place.path) + ": loaded, but it refused to start";
    return words + " (" + source + ")";
}

} // namespace ruvo
