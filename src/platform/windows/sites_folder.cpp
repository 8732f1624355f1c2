#include "platform/sites_folder.h"

#include "platform/environment.h"

namespace ruvo {

std::string SitesFolder() {
    return EnvironmentValue("ProgramData").value_or("C:\\ProgramData") + "\\ruvo";
}

} // namespace ruvo
