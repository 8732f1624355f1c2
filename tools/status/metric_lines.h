// The metrics' text format.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

/// NAME="VALUE"
[[nodiscard]] std::string MetricLabel(std::string_view name, std::string_view value);

/// Gauges. The samples of one name stand together, as the format demands, in whatever order they are added.
class CMetrics {
public:
    /// Name and help must be constants.
    void Add(std::string_view name, std::string_view help, const std::string& labels, std::int64_t value);
    [[nodiscard]] std::string Text() const;

private:
    struct SFamily {
        std::string_view name;
        std::string_view help;
        std::string samples;
    };
    std::vector<SFamily> m_families; ///< in the order of their first samples
};

} // namespace ruvo
