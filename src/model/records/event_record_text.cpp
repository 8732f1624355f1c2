// Records for reading.
#include "model/records/event_record.h"

#include "model/cells/binary_cell.h"
#include "model/format/display_layout.h"
#include "model/format/formatter.h"
#include "model/records/event_location.h"

#include <array>

namespace ruvo {
namespace {

constexpr std::size_t kTimeCapacity = 50;
constexpr std::size_t kTextCapacity = 256;
constexpr std::string_view kUnreadable = "????";

std::string CellContribution(const CCell& cell, std::uint16_t location) {
    if (cell.GetKind() != ECellKind::Binary || !ListsBits(location)) {
        return cell.GetRawText();
    }
    std::string text;
    static_cast<const CBinaryCell&>(cell).GetBitListText(text, FirstBitNumber(location));
    return text;
}

} // namespace

std::string CEventRecord::GetTimeText() const {
    if (!IsValid()) {
        return {};
    }
    std::array<char, kTimeCapacity> buffer;
    bool success = true;
    const std::size_t length =
        FormatValue(&GetCurrentLocale(), buffer.data(), buffer.size(), "%lt", &m_timeStamp, success);
    return {buffer.data(), length};
}

std::string CEventRecord::GetEventText() const {
    if (!IsValid()) {
        return {};
    }
    std::array<char, kTextCapacity> buffer;
    if (m_value == nullptr) {
        const std::size_t length = FormatText(&GetCurrentLocale(), buffer.data(), buffer.size(), m_eventText);
        return CleanDisplayLine({buffer.data(), length});
    }
    bool success = true;
    const std::size_t length =
        FormatValue(&GetCurrentLocale(), buffer.data(), buffer.size(), m_eventText, m_value.get(), success);
    return CleanDisplayLine(success ? std::string_view(buffer.data(), length) : kUnreadable);
}

std::string CSimpleEventRecord::GetText() const {
    std::array<char, kTextCapacity> buffer;
    bool success = true;
    const std::size_t length =
        FormatValues(&GetCurrentLocale(), buffer.data(), buffer.size(), m_formatText, m_values, success);
    return CleanDisplayLine({buffer.data(), length});
}

std::string CExtendedEventRecord::GetText() const {
    std::string result;
    std::string pending;
    bool continued = false;
    for (const auto& cell : m_cells) {
        pending += CellContribution(*cell, GetEventLocation());
        if (continued) {
            continue; // a text once marked stays so, whatever follows
        }
        CDisplayLayout layout;
        layout.Write(pending);
        continued = layout.IsContinued();
        if (!continued) {
            result += layout.GetText() + "\n";
            pending.clear();
        }
    }
    return result + pending;
}

} // namespace ruvo
