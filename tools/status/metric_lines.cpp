#include "tools/status/metric_lines.h"

#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

std::string MetricLabel(std::string_view name, std::string_view value) {
    std::string text(name);
    text += "=\"";
    for (const char c : EscapeControls(value)) { // which does not escape backslashes and quotes
        text += c == '\\' || c == '"' ? "\\" : "";
        text += c;
    }
    return text + '"';
}

void CMetrics::Add(std::string_view name, std::string_view help, const std::string& labels,
                   std::int64_t value) {
    auto family = std::ranges::find(m_families, name, &SFamily::name);
    if (family == m_families.end()) {
        family = m_families.insert(family, {name, help, {}});
    }
    family->samples += std::string(name) + '{' + labels + "} " + std::to_string(value) + '\n';
}

std::string CMetrics::Text() const {
    std::string text;
    for (const SFamily& family : m_families) {
        text.append("# HELP ").append(family.name).append(" ").append(family.help).append("\n");
        text.append("# TYPE ").append(family.name).append(" gauge\n").append(family.samples);
    }
    return text;
}

} // namespace ruvo
