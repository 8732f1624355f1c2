#include "tools/sites/given_site.h"

#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "platform/sites_folder.h"
#include "tools/typed_path.h"

#include <string_view>

namespace ruvo {

std::string GivenSitePath(const std::string& typed) {
    constexpr std::string_view kIniExtension = ".ini";
    const bool hasEnding = EqualIniNames(SplitPath(typed).extension, kIniExtension);
    if (typed.find_first_of("/\\:") != std::string::npos) {
        return hasEnding ? TypedPath(typed) : std::string();
    }
    return TypedPath(SitesFolder() + "\\" + (hasEnding ? SplitPath(typed).name : typed) +
                     std::string(kIniExtension));
}

} // namespace ruvo
