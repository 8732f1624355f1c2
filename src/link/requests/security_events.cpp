#include "link/requests/security_events.h"

#include "link/callbacks.h"
#include "link/seam/known_cells.h"
#include "model/values/data_factory.h"
#include "model/values/parlane_integers.h"
#include "platform/clock.h"
#include "platform/trace.h"

#include <algorithm>
#include <cstdio>

namespace ruvo {

namespace {

// Codes used in place of a cell address.
constexpr std::uint16_t kResetCellCode = 0xFFFD;
constexpr std::uint16_t kChangeBreakerCode = 0xFFFC;
constexpr std::uint16_t kCellChangeCode = 0xFFFB;

constexpr std::size_t kTaggedHeaderSize = 1 + 1; // type code and length

struct SCellLabel {
    char text[32];
};

SCellLabel CellLabel(const char* what, CellAddress cell) {
    SCellLabel label{};
    std::snprintf(label.text, sizeof label.text, "%s %02X.%02X", what, ColumnOf(cell), RowOf(cell));
    return label;
}

std::vector<std::uint8_t> TaggedBytes(const CParlaneData& value) {
    std::vector<std::uint8_t> bytes;
    CDataFactory::AppendTagged(&value, bytes);
    return bytes;
}

/// Texts as their characters, anything else as hexadecimal bytes, between single quotes.
std::string RenderValue(std::span<const std::uint8_t> tagged) {
    const std::span<const std::uint8_t> data = tagged.subspan(kTaggedHeaderSize);
    if (tagged[0] == kTypeText) {
        std::string characters(data.begin(), data.end());
        std::ranges::replace(characters, '\0', '.'); // would end the line early
        return std::string("'").append(characters).append("'");
    }
    std::string text = "'";
    for (std::size_t i = 0; i < data.size(); ++i) {
        char byte[8];
        std::snprintf(byte, sizeof byte, i == 0 ? "0x%02X" : " 0x%02X", data[i]);
        text += byte;
    }
    text += "'";
    return text;
}

} // namespace

CParlaneIEC870 SecurityTimeStamp() {
    CParlaneIEC870 stamp;
    const std::optional<SCalendarTime> now = LocalTime();
    if (now) {
        stamp.SetYear(static_cast<unsigned>(now->year % 100));
        stamp.SetMonth(static_cast<unsigned>(now->month));
        stamp.SetDay(static_cast<unsigned>(now->day));
        stamp.SetHour(static_cast<unsigned>(now->hour));
        stamp.SetMinute(static_cast<unsigned>(now->minute));
        stamp.SetMilliseconds(static_cast<unsigned>(now->second) * 1000);
    }
    stamp.SetInvalid(!now);
    stamp.SetSummerTime(IsDaylightTime());
    return stamp;
}

void CSecurityEvents::LogWrite(CellAddress cell, const CParlaneIEC870& time,
                               const CParlaneData& value) noexcept {
    if (cell == cells::kBreaker) {
        LogEvent(kChangeBreakerCode, "Change Breaker", time, value);
    } else if (m_settingChangeMode) {
        LogEvent(cell, "Setting change", time, value);
    } else {
        LogEvent(kCellChangeCode, CellLabel("Cell change", cell).text, time, value);
    }
}

void CSecurityEvents::LogReply(CellAddress cell, const CParlaneIEC870& time, LinkStatus status) noexcept {
    LogEvent(cell, "Setting reply code", time, CParlaneUint(ReplyCodeOf(status), 1));
}

void CSecurityEvents::LogReset(CellAddress cell, const CParlaneIEC870& time) noexcept {
    if (cell != cells::kPassword) {
        LogEvent(kResetCellCode, CellLabel("Reset cell", cell).text, time, CParlaneUint(0, 2));
    }
}

// A failure to report a write, or in the callback, must not affect the write itself.
void CSecurityEvents::LogEvent(std::uint16_t code, const char* label, const CParlaneIEC870& time,
                               const CParlaneData& value) noexcept {
    try {
        WriteEvent(code, label, time, value);
    } catch (...) {
        TraceError("A security event could not be reported");
    }
}

void CSecurityEvents::WriteEvent(std::uint16_t code, const char* label, const CParlaneIEC870& time,
                                 const CParlaneData& value) {
    const std::vector<std::uint8_t> stamp = TaggedBytes(time);
    const std::vector<std::uint8_t> tagged = TaggedBytes(value);
    const unsigned milliseconds = stamp[2] + 256U * stamp[3];
    TraceInfo("P32Wrap : Security Event : %04d-%02d-%02d %02d:%02d:%02u.%03u  '%16s' [%02X.%02X] '%-24s'  "
              "dt:0x%02X  dl:0x%02X  dv:%s",
              (stamp[8] & 0x7F) + 2000, stamp[7] & 0x0F, stamp[6] & 0x1F, stamp[5] & 0x1F, stamp[4] & 0x3F,
              milliseconds / 1000, milliseconds % 1000, m_userName, ColumnOf(code), RowOf(code), label,
              tagged[0], tagged[1], RenderValue(tagged).c_str());
    if (const SecurityEventFunction callback = LinkCallbacks().securityEvent) {
        callback(m_userName, code, label, stamp, tagged);
    }
}

} // namespace ruvo
