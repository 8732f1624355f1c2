// A registry without any value, for the targets that are about something else.
#include "platform/registry.h"

namespace ruvo {

std::optional<std::string> ReadRegistryValue(ERegistryRoot /*root*/, std::string_view /*keyPath*/,
                                             std::string_view /*valueName*/, std::size_t /*capacity*/) {
    return std::nullopt;
}

} // namespace ruvo
