// The events of a digest, from the day files in which they came in.
#pragma once

#include "tools/digest/site_digest.h"
#include "tools/events/event_files.h"

namespace ruvo {

/// Adds a bay for each relay from which events or damage came in, and what could not be read.
void ReadDigestEvents(const SFoundFiles& found, const SSiteVisits& visits, SSiteDigest& digest,
                      SConsole& console);

} // namespace ruvo
