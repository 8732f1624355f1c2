#include "tools/events/event_values.h"

#include "protocol/binary_cell.h"
#include "protocol/cell_factory.h"
#include "tools/events/event_fields.h"

#include <algorithm>
#include <string_view>

namespace ruvo {

namespace {

/// How the extraction labels the cell that it makes of an event's value.
constexpr std::string_view kValueLabel = "Event Value ";
constexpr unsigned kFlagBits = 32;

} // namespace

const CCell* ValueCell(const CEventRecord& record) {
    const auto* const extended = AsExtended(record);
    const bool hasCell = extended != nullptr && !extended->GetCells().empty();
    return hasCell && extended->GetCells().front()->GetLabelTemplate().starts_with(kValueLabel)
               ? extended->GetCells().front().get()
               : nullptr;
}

// A text takes "%s"; all other kinds then fall back on their own format.
std::string ValueText(const CCell& cell) {
    if (!IsValue(cell.GetValue())) {
        return {};
    }
    if (cell.HasFormat()) {
        return cell.GetValueText();
    }
    std::string text;
    cell.Format(text, "%s", EFormatMode::Value);
    return text;
}

std::string EventValueText(const CEventRecord& record) {
    if (const CCell* const cell = ValueCell(record)) {
        return ValueText(*cell);
    }
    const auto cell = CCellFactory::CreateWithDefaultLimits(CCellID(), record.GetEventValue(), std::string());
    return cell != nullptr ? ValueText(*cell) : std::string();
}

std::string SetBitsText(const CCell& cell) {
    std::string text;
    unsigned bit = 0;
    for (const std::string& name : BitNamesOf(cell)) {
        if (bit < kFlagBits &&
            (static_cast<const CParlaneFlags*>(cell.GetValue())->GetWord() >> bit & 1U) != 0) {
            text += text.empty() ? "" : ", ";
            text += name;
        }
        ++bit;
    }
    return text;
}

std::vector<std::string> SplitLines(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

} // namespace ruvo
