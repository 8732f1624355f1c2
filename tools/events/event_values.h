// Values of event records as people read them, in code page 1252.
#pragma once

#include "model/records/event_record.h"

#include <functional>
#include <string>
#include <vector>

namespace ruvo {

/// The cell that holds the event's value, which knows its strings; null when the record has none.
[[nodiscard]] const CCell* ValueCell(const CEventRecord& record);
/// The cell's value by its label's format where that shows it, else by the one of its kind; empty when it
/// holds none.
[[nodiscard]] std::string ValueText(const CCell& cell);

/// Label and value of a cell. A template that begins with its value has no label: all of it is the value.
struct SCellTexts {
    std::string label;
    std::string value;
};
[[nodiscard]] SCellTexts CellTexts(const CCell& cell);

/// The event's text, and what relays write into it that the text itself does not show: all after a "%" that
/// was taken for a value's format, or the whole of a text that could not be formatted.
[[nodiscard]] std::string EventLine(const CEventRecord& record);
/// The event's own value; empty for none.
[[nodiscard]] std::string EventValueText(const CEventRecord& record);
/// Names of the bits that are set, for a cell that names any.
void ForEachSetBit(const CCell& cell, const std::function<void(const std::string& name)>& handle);
/// The same as "Start, Trip".
[[nodiscard]] std::string SetBitsText(const CCell& cell);

[[nodiscard]] std::vector<std::string> SplitLines(const std::string& text);

} // namespace ruvo
