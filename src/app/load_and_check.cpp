#include "app/load_and_check.h"

#include "config/configuration.h"
#include "config/destination_root.h"
#include "config/validation.h"
#include "log/error_log.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"

namespace ruvo {

EResultCode LoadAndCheck(CRunContext& context, const std::string& iniPath, bool checkOnly) {
    const std::string fullPath = FullPath(iniPath);
    if (fullPath.empty()) {
        return EResultCode::IniFileNotOpened;
    }
    const bool loaded = LoadConfiguration(fullPath, context.Config());
    ResolveDestinationRoot(context, loaded);
    ResolveErrorLogPath(context, loaded);
    if (!loaded) {
        return EResultCode::IniFileNotOpened;
    }
    if (!CanWriteInFolder(context.DestinationRoot())) {
        return context.IsDestinationFromRegistry() ? EResultCode::RegistryDestinationInvalid
                                                   : EResultCode::EventRootInvalid;
    }
    if (checkOnly && !CanCreateFile(ErrorLogPath())) {
        return EResultCode::LogFileNotWritable;
    }
    return ValidateConfiguration(context.Config());
}

} // namespace ruvo
