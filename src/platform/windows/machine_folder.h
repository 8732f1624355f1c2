// The folder of the machine's sites, and of their state.
#pragma once

#include "platform/environment.h"

#include <string>

namespace ruvo {

inline std::string MachineFolder() {
    return EnvironmentValue("ProgramData").value_or("C:\\ProgramData") + "\\ruvo";
}

} // namespace ruvo
