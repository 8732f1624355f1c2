// The problems of a digest, from the error log.
#pragma once

#include "tools/digest/site_digest.h"

#include <string>

namespace ruvo {

/// Part of an error log.
struct SLogSpan {
    std::string path;
    std::string from; ///< local time
    std::string to;
};

/// Adds what the site's own lines in it mean, the gravest first, and what could not be read. A missing log
/// has no lines: the first problem creates it.
void ReadDigestProblems(const SLogSpan& log, COwnLines& ownLines, const SSiteVisits& visits,
                        SSiteDigest& digest);

} // namespace ruvo
