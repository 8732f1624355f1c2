// The chapters on the lines of the error log.
#pragma once

#include <string>

namespace ruvo {

/// From the table that ruvoctl explain goes by.
std::string LineChapters();

} // namespace ruvo
