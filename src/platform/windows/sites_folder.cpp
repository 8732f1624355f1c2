#include "platform/sites_folder.h"

#include "platform/modules.h"
#include "platform/windows/machine_folder.h"

namespace ruvo {

std::string SitesFolder() {
    return MachineFolder();
}

// Beside the program: the sites' folder lets others make files.
std::string AfterVisitFolder() {
    return CodeFolder() + "\\after-visit.d";
}

} // namespace ruvo
