// The run over all relays of the selected link type.
#pragma once

#include "config/run_context.h"

namespace ruvo {

class CRunEnd;
class CVisitRecord;

/// Visits every relay in key order. Every problem is logged; none ends the run but a serial or modem link
/// that cannot be opened. A serial or modem link stays open: the caller closes it, and then finishes `end`,
/// by which another thread may end the run early. `record` gets an entry for each relay.
void RunExtraction(CRunContext& context, CRunEnd& end, CVisitRecord* record = nullptr);

} // namespace ruvo
