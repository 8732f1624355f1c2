// A site's status in the forms that people, scripts and collectors of metrics read. All text is UTF-8.
#pragma once

#include "tools/status/verdict.h"

#include <cstdint>
#include <string>

namespace ruvo {

/// For reading; the first line is the verdict, which is all that some monitoring systems show.
[[nodiscard]] std::string StatusAsText(const SSiteStatus& status, const SVerdict& verdict);
/// One JSON object.
[[nodiscard]] std::string StatusAsJson(const SSiteStatus& status, const SVerdict& verdict);
/// The text format that node exporters collect from files. The site's name keeps the metrics of several
/// sites on one machine apart; `now` is in Unix seconds.
[[nodiscard]] std::string StatusAsMetrics(const SSiteStatus& status, const SVerdict& verdict,
                                          const std::string& site, std::int64_t now);

} // namespace ruvo
