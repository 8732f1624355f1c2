// A site's status as text, JSON and metrics. All text is UTF-8.
#pragma once

#include "tools/status/verdict.h"

#include <cstdint>
#include <string>

namespace ruvo {

/// For people; the first line is the verdict, which is all that some monitoring systems show.
[[nodiscard]] std::string StatusAsText(const SSiteStatus& status, const SVerdict& verdict);
/// One JSON object.
[[nodiscard]] std::string StatusAsJson(const SSiteStatus& status, const SVerdict& verdict);
/// The text format that node exporters read from files. The site's name distinguishes several sites on one
/// machine; `now` is in Unix seconds.
[[nodiscard]] std::string StatusAsMetrics(const SSiteStatus& status, const SVerdict& verdict,
                                          const std::string& site, std::int64_t now);

} // namespace ruvo
