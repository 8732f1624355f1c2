// Environment variables.
#pragma once

#include <optional>
#include <string>

namespace ruvo {

/// The value of an environment variable; none when it is unset or empty.
std::optional<std::string> EnvironmentValue(const char* name);

} // namespace ruvo
