// Why the comms server does not start, for people.
#pragma once

#include <string>

namespace ruvo {

/// What was tried to start the comms server, where that is said, and what the system answered. To be asked
/// after a failure: the attempt is made again.
std::string ExplainServerFailure();

} // namespace ruvo
