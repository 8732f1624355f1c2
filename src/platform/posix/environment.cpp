#include "platform/environment.h"

#include <cstdlib>
#include <unistd.h>

namespace ruvo {

std::optional<std::string> EnvironmentValue(const char* name) {
    const char* const value = std::getenv(name);
    if (value == nullptr || *value == '\0') {
        return std::nullopt;
    }
    return value;
}

void SetEnvironmentValue(const std::string& name, const std::string& value) {
    setenv(name.c_str(), value.c_str(), 1);
}

void ClearEnvironmentValue(const std::string& name) {
    unsetenv(name.c_str());
}

std::vector<std::string> WholeEnvironment() {
    std::vector<std::string> variables;
    for (char** at = environ; at != nullptr && *at != nullptr; ++at) {
        variables.emplace_back(*at);
    }
    return variables;
}

} // namespace ruvo
