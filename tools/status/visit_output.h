// The records of visits as text, JSON and metrics. All text is UTF-8.
#pragma once

#include "base/json_writer.h"
#include "tools/status/visit_status.h"

#include <string>
#include <vector>

namespace ruvo {

/// "last visit 2026-11-25 02:00 UTC (3 min 4 s), 12 of 12 relays reached, 37 events"; empty without one.
[[nodiscard]] std::string VisitSummaryText(const SVisitStatus& visits);
/// The rows of a table, its head first.
[[nodiscard]] std::vector<std::vector<std::string>> VisitRows(const SVisitStatus& visits);

void WriteVisits(CJsonWriter& json, const SVisitStatus& visits);
void AppendVisitMetrics(std::string& out, const SVisitStatus& visits, const std::string& siteLabel);

} // namespace ruvo
