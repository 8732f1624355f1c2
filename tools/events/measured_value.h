// An event's value for programs that calculate: beside the text that people read, a number and its unit.
#pragma once

#include "model/records/event_record.h"

#include <string>

namespace ruvo {

/// Texts of the relay, in code page 1252.
struct SMeasuredValue {
    std::string text;   ///< "1.25 kA", as it is shown; empty for none
    std::string number; ///< "1250", as JSON and spreadsheets take it; empty for a value that is no number
    std::string unit;   ///< "A", that of the number; empty for none
    std::string set;    ///< "Start, Trip", the names of the bits that are set; empty for a value without such
};

[[nodiscard]] SMeasuredValue MeasuredValueOf(const CEventRecord& record);

} // namespace ruvo
