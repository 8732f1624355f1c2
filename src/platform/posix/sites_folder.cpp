#include "platform/sites_folder.h"

#include "platform/posix/native_path.h"

namespace ruvo {

std::string SitesFolder() {
    return FromNativePath("/etc/ruvo");
}

std::string AfterVisitFolder() {
    return FromNativePath("/etc/ruvo/after-visit.d");
}

} // namespace ruvo
