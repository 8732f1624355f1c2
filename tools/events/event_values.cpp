#include "tools/events/event_values.h"

#include "model/cells/binary_cell.h"
#include "model/cells/cell_factory.h"
#include "model/cells/cell_values.h"
#include "model/format/display_layout.h"
#include "model/format/formatter.h"
#include "tools/events/event_fields.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace ruvo {

namespace {

/// How the extraction labels the cell that it makes of an event's value.
constexpr std::string_view kValueLabel = "Event Value ";
constexpr unsigned kFlagBits = 32;
/// The text of an event whose format does not suit its value.
constexpr std::string_view kUnreadable = "????";

/// Whether a format asks for any value: "80% zone" and "110%" hold no conversion that does.
bool HasConversion(std::string_view format) {
    if (format.find('%') == std::string_view::npos) {
        return false;
    }
    std::array<char, kCellTextCapacity> text;
    bool lacksNone = true;
    FormatValues(nullptr, text.data(), text.size(), format, CParlaneDataList(), lacksNone);
    return !lacksNone;
}

std::string WithoutDoubled(std::string_view format) {
    std::string text;
    for (std::size_t at = 0; at < format.size(); ++at) {
        text += format[at];
        at += format.substr(at, 2) == "%%" ? 1 : 0;
    }
    return text;
}

/// The text from the first "%" on, which the extraction cut from the event's text as a format, where it is no
/// format after all.
std::string TextAfterPercent(const CEventRecord& record) {
    const CCell* const cell = ValueCell(record);
    if (cell == nullptr) {
        return {};
    }
    const std::string_view rest = std::string_view(cell->GetLabelTemplate()).substr(kValueLabel.size());
    return rest.starts_with('%') && !HasConversion(rest) ? WithoutDoubled(rest) : std::string();
}

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
    if (cell.HasFormat() && HasConversion(cell.GetFormatPart())) {
        return cell.GetValueText();
    }
    std::string text;
    cell.Format(text, "%s", EFormatMode::Value);
    return text;
}

SCellTexts CellTexts(const CCell& cell) {
    std::string label = cell.GetLabelText();
    // A value that does not suit leaves the template unchanged.
    const bool isValue = !cell.HasFormat() && HasConversion(cell.GetLabelTemplate()) &&
                         IsValue(cell.GetValue()) && label != cell.GetLabelTemplate();
    SCellTexts texts;
    (isValue ? texts.value : texts.label) = std::move(label);
    if (!isValue) {
        texts.value = ValueText(cell);
    }
    return texts;
}

std::string EventLine(const CEventRecord& record) {
    const std::string& stored = record.GetEventFormat();
    const std::string text = record.GetEventText();
    if (text == kUnreadable && stored != kUnreadable) {
        return text + " (" + stored + ")";
    }
    const bool isFormat = text.empty() || HasConversion(stored);
    return (isFormat ? text : CleanDisplayLine(WithoutDoubled(stored))) + TextAfterPercent(record);
}

std::string EventValueText(const CEventRecord& record) {
    if (const CCell* const cell = ValueCell(record)) {
        return ValueText(*cell);
    }
    const auto cell = CCellFactory::Create(CCellID(), record.GetEventValue(), nullptr, nullptr, nullptr,
                                           nullptr, std::string(), 0, 1, 1);
    return cell != nullptr ? ValueText(*cell) : std::string();
}

void ForEachSetBit(const CCell& cell, const std::function<void(const std::string& name)>& handle) {
    unsigned bit = 0;
    for (const std::string& name : BitNamesOf(cell)) {
        if (bit < kFlagBits &&
            (static_cast<const CParlaneFlags*>(cell.GetValue())->GetWord() >> bit & 1U) != 0) {
            handle(name);
        }
        ++bit;
    }
}

std::string SetBitsText(const CCell& cell) {
    std::string text;
    ForEachSetBit(cell, [&text](const std::string& name) {
        text += text.empty() ? "" : ", ";
        text += name;
    });
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
