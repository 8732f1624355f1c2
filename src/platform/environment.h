// Environment variables.
#pragma once

#include <optional>
#include <string>

namespace ruvo {

/// The value of an environment variable; none when it is unset or empty.
std::optional<std::string> EnvironmentValue(const char* name);

/// Gives this process, and what it loads, a variable. Not while other threads look at the environment.
void SetEnvironmentValue(const std::string& name, const std::string& value);

} // namespace ruvo
