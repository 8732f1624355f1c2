#include "platform/standard_streams.h"

namespace ruvo {

// A standard stream is a handle of its own here, and a closed one stays invalid; writing to a pipe without a
// reader is a failure like others.
void OccupyClosedStandardStreams() noexcept {}
void IgnoreClosedPipes() noexcept {}

} // namespace ruvo
