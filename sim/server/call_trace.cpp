#include "sim/server/record_files.h"

#include "platform/text_file.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>

namespace ruvo::sim {
namespace {

std::string CellText(const SCall& call) {
    if (!call.cell) {
        return "-";
    }
    std::array<char, 8> text{};
    const bool column = RowOf(call.operation).target == ETarget::Column;
    std::snprintf(text.data(), text.size(), column ? "%02X" : "%02X.%02X", ColumnOf(*call.cell),
                  CellRowOf(*call.cell));
    return text.data();
}

} // namespace

bool CLineFile::Open(const std::string& path) {
    return path.empty() || m_file.Open(path, {.read = true, .write = true, .create = true}).Good();
}

void CLineFile::Append(const std::string& line) {
    if (!m_file.IsOpen()) {
        return;
    }
    const std::string text = line + "\n";
    std::uint64_t position = 0;
    std::size_t written = 0;
    // The end is looked up each time: another connection may have written meanwhile.
    if (m_file.Seek(0, ESeekOrigin::End, position).Good()) {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        // A full disk loses lines, as it would for the real server's own files; the calls go on.
        static_cast<void>(m_file.Write(std::span(bytes, text.size()), written));
    }
}

bool CEventState::Open(const std::string& path) {
    if (!path.empty() && GetPathKind(path) == EPathKind::File && !ReadTextFile(path, m_before)) {
        return false;
    }
    if (!m_file.Open(path)) {
        return false;
    }
    if (!m_before.empty() && m_before.back() != '\n') {
        m_file.Append(""); // closes the line that was cut short
    }
    return true;
}

std::size_t CEventState::HandedOver(const std::string& relay) const {
    std::size_t count = 0;
    std::string_view rest = m_before;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        count += rest.substr(0, end) == relay + ";" ? 1U : 0U;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return count;
}

std::string CCallTrace::StatusText(Status status) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%04X", static_cast<unsigned>(status));
    return text.data();
}

// What there is no memory for is not noted; the calls and the notifications go on.

void CCallTrace::NoteText(const SCall& call, std::optional<Status> status, std::string_view remark) noexcept {
    try {
        std::string line(RowOf(call.operation).name);
        line += " " + (call.address ? std::to_string(*call.address) : std::string("-"));
        line += " " + CellText(call) + " " + (status ? StatusText(*status) : "failed");
        line += call.detail.empty() ? "" : " " + call.detail;
        line += remark.empty() ? "" : " " + std::string(remark);
        m_file.Append(line);
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
}

void CCallTrace::NoteCompletion(const char* method, Status status) noexcept {
    try {
        m_file.Append(std::string(method) + " - - " + StatusText(status));
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
}

} // namespace ruvo::sim
