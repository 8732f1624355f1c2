// The lines about one visit: what the extraction reports, in words.
#pragma once

#include "extraction/extraction_report.h"

namespace ruvo {

/// Writes a line for everything that people should know of the visit, each with the connection details. The
/// number of lines is bounded, whatever the relay has done. The text of a line is made just before it is
/// written, so that running out of memory costs no more than that one.
void LogVisit(const SExtractionReport& report) noexcept;

} // namespace ruvo
