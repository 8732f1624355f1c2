// The run over all relays of the selected link type.
#pragma once

#include "config/run_context.h"

#include <cstdint>
#include <string>

namespace ruvo {

class CRunLedger;

/// Visits every relay in key order. Every problem is logged; none ends the run but a serial or modem link
/// that cannot be opened. A serial or modem link stays open: the caller closes it.
void RunExtraction(CRunContext& context);

/// Handles one relay, which the open link reaches: login, then its events. Throws nothing.
void ExtractDevice(CRunContext& context, const std::string& key, std::int32_t deviceAddress,
                   CRunLedger* ledger = nullptr);

} // namespace ruvo
