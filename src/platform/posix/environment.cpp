#include "platform/environment.h"

#include <cstdlib>

namespace ruvo {

std::optional<std::string> EnvironmentValue(const char* name) {
    const char* const value = std::getenv(name);
    if (value == nullptr || *value == '\0') {
        return std::nullopt;
    }
    return value;
}

} // namespace ruvo
