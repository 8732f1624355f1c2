#include "sim/server/call_trace.h"

#include <array>
#include <cstdio>

namespace ruvo::sim {

namespace {

std::string CellText(const SCall& call) {
    if (!call.cell) {
        return "-";
    }
    std::array<char, 8> text{};
    const bool column = OperationRow(call.operation).target == ETarget::Column;
    std::snprintf(text.data(), text.size(), column ? "%02X" : "%02X.%02X", ColumnOf(*call.cell),
                  RowOf(*call.cell));
    return text.data();
}

} // namespace

std::string CCallTrace::StatusText(LinkStatus status) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%04X", static_cast<unsigned>(status));
    return text.data();
}

// What there is no memory for is not noted; the calls and the notifications go on.

void CCallTrace::WriteCall(const SCall& call, std::optional<LinkStatus> status,
                           std::string_view remark) noexcept {
    try {
        std::string line(OperationRow(call.operation).name);
        line += " " + (call.address ? std::to_string(*call.address) : std::string("-"));
        line += " " + CellText(call) + " " + (status ? StatusText(*status) : "failed");
        line += call.detail.empty() ? "" : " " + call.detail;
        line += remark.empty() ? "" : " " + std::string(remark);
        m_file.Append(line);
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
}

void CCallTrace::WriteCompletion(const char* method, LinkStatus status) noexcept {
    try {
        m_file.Append(std::string(method) + " - - " + StatusText(status));
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
}

} // namespace ruvo::sim
