// The lines of the metrics' text format.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ruvo {

/// NAME="VALUE"
[[nodiscard]] std::string MetricLabel(std::string_view name, std::string_view value);
void AppendMetricHead(std::string& out, std::string_view name, std::string_view help);
void AppendMetricSample(std::string& out, std::string_view name, const std::string& labels,
                        std::int64_t value);

} // namespace ruvo
