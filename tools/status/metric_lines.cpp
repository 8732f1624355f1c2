#include "tools/status/metric_lines.h"

#include "tools/text_encoding.h"

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

void AppendMetricHead(std::string& out, std::string_view name, std::string_view help) {
    out.append("# HELP ").append(name).append(" ").append(help).append("\n");
    out.append("# TYPE ").append(name).append(" gauge\n");
}

void AppendMetricSample(std::string& out, std::string_view name, const std::string& labels,
                        std::int64_t value) {
    out += std::string(name) + '{' + labels + "} " + std::to_string(value) + '\n';
}

} // namespace ruvo
