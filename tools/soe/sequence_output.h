// A sequence of events as text, CSV and JSON. docs/exports.md documents the columns.
#pragma once

#include "tools/events/csv_row.h"
#include "tools/soe/event_sequence.h"
#include "tools/text_output.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ruvo {

/// "+0.082", "-1:00.082", "+2d 03:00:00.082"; milliseconds.
[[nodiscard]] std::string DeltaText(std::int64_t delta);

/// For people; `zone` is what the times are called, empty for those that the relays' clocks show.
void PrintSequenceAsText(CTextOutput& out, const CEventSequence& sequence, std::string_view zone,
                         std::size_t width);
void PrintSequenceAsCsv(CTextOutput& out, const CEventSequence& sequence, const SCsvForm& form);
/// One object a line.
void PrintSequenceAsJson(CTextOutput& out, const CEventSequence& sequence);

} // namespace ruvo
