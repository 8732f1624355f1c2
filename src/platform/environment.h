// Environment variables.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// The value of an environment variable; none when it is unset or empty.
std::optional<std::string> EnvironmentValue(const char* name);

/// Sets a variable for this process and the libraries that it loads. Not safe while other threads read the
/// environment.
void SetEnvironmentValue(const std::string& name, const std::string& value);

/// Removes a variable; with the same limits.
void ClearEnvironmentValue(const std::string& name);

/// All variables, as "NAME=value".
std::vector<std::string> WholeEnvironment();

} // namespace ruvo
