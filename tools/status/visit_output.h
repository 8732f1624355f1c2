// The records of visits as text, JSON and metrics. All text is UTF-8.
#pragma once

#include "base/json_writer.h"
#include "tools/sites/site_visits.h"
#include "tools/status/metric_lines.h"

#include <string>
#include <vector>

namespace ruvo {

/// "last visit 2026-11-25 02:00 (3 min 4 s), 12 of 12 relays reached, 37 events"; empty without one.
[[nodiscard]] std::string VisitSummaryText(const SSiteVisits& visits);
/// The rows of a table, its head first.
[[nodiscard]] std::vector<std::vector<std::string>> VisitRows(const SSiteVisits& visits);

void WriteVisits(CJsonWriter& json, const SSiteVisits& visits);
void AddVisitMetrics(CMetrics& out, const SSiteVisits& visits, const std::string& siteLabel);
/// The labels of a relay: its name, else its key; its key; its plant text.
[[nodiscard]] std::string RelayLabels(const SRelayVisit& relay);

} // namespace ruvo
