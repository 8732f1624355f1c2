// The problems of a digest, from the error log.
#pragma once

#include "tools/digest/site_digest.h"

#include <string>

namespace ruvo {

/// Adds what the lines from one local time to another mean, the gravest first, and what could not be read. A
/// missing log has no lines: the first problem creates it.
void ReadDigestProblems(const std::string& logPath, const std::string& from, const std::string& to,
                        const SSiteVisits& visits, SSiteDigest& digest);

} // namespace ruvo
