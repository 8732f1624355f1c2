#include "tools/ini/site_places.h"

#include "app/program_folder.h"
#include "base/text.h"
#include "config/configuration.h"
#include "config/destination_root.h"
#include "config/ini_keys.h"
#include "log/error_log.h"
#include "paths/path_utilities.h"
#include "tools/text_encoding.h"

namespace ruvo {

namespace {

std::string LinkName(const CRuvoConfig& config) {
    switch (SelectedLink(config)) {
    case ELink::Serial:
        return config.CommPort();
    case ELink::Modem:
        return config.TapiModemName();
    case ELink::Ethernet:
        break;
    }
    return {};
}

} // namespace

std::optional<SSitePlaces> ReadSitePlaces(const std::string& fullIniPath) {
    const CProgramFolder inProgramFolder;
    CRunContext context;
    if (fullIniPath.empty() || !LoadConfiguration(fullIniPath, context.Config())) {
        return std::nullopt;
    }
    context.Config().WipePasswords();
    ResolveDestinationRoot(context, true);
    ResolveErrorLogPath(context, true);
    SSitePlaces places{.events = context.DestinationRoot(),
                       .log = ErrorLogPath(),
                       .relays = VisitedRelays(context.Config()),
                       .linkName = BlankControlCharacters(SystemTextToUtf8(LinkName(context.Config())))};
    StripTrailingSeparators(places.events); // the registry's ends with one
    return places.events.empty() || places.log.empty() ? std::nullopt : std::optional(std::move(places));
}

} // namespace ruvo
