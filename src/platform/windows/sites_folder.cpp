#include "platform/sites_folder.h"

#include "platform/environment.h"
#include "platform/modules.h"

namespace ruvo {

std::string SitesFolder() {
    return EnvironmentValue("ProgramData").value_or("C:\\ProgramData") + "\\ruvo";
}

// Beside the program: the sites' folder lets others make files.
std::string AfterVisitFolder() {
    return CodeFolder() + "\\after-visit.d";
}

} // namespace ruvo
