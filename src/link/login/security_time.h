// The time stamp of security events.
#pragma once

#include "model/values/parlane_time.h"

namespace ruvo {

/// The local time now, to the second: marked invalid when it cannot be had, summer time while daylight time
/// is observed.
CParlaneIEC870 SecurityTimeStamp();

} // namespace ruvo
