#include "log/connection_details.h"

namespace ruvo {

SConnectionDetails& ConnectionDetails() {
    static SConnectionDetails details;
    return details;
}

void ResetConnectionDetails() {
    ConnectionDetails() = SConnectionDetails();
}

} // namespace ruvo
