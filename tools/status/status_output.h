// The status of sites as text, JSON and metrics. All text is UTF-8.
#pragma once

#include "tools/status/site_report.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace ruvo {

class CJsonWriter;

/// For people; the first line is the verdict, which is all that some monitoring systems show.
[[nodiscard]] std::string StatusAsText(const SSiteStatus& status, const SVerdict& verdict);
/// One JSON object.
[[nodiscard]] std::string StatusAsJson(const SSiteStatus& status, const SVerdict& verdict);
/// The members of that object.
void WriteStatus(CJsonWriter& json, const SSiteStatus& status, const SVerdict& verdict);
/// The causes, or where all is good what was seen; on one line, of many causes the first.
[[nodiscard]] std::string VerdictText(const SSiteStatus& status, const SVerdict& verdict,
                                      std::size_t mostCauses);

/// A line for the whole, then one for each site.
[[nodiscard]] std::string SitesAsText(const SAllSites& all);
/// One JSON object.
[[nodiscard]] std::string SitesAsJson(const SAllSites& all);

/// The text format that node exporters read from files. `now` is in Unix seconds.
[[nodiscard]] std::string StatusAsMetrics(std::span<const SSiteReport> sites, std::int64_t now);

} // namespace ruvo
