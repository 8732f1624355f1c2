#include "platform/users.h"

namespace ruvo {

// What a new file allows to whom comes from its folder, whoever makes it.
std::string UserToBecome(const std::string& /*folder*/) {
    return {};
}

} // namespace ruvo
