// The options that choose how records are shown, the same in every command that shows them.
#pragma once

#include "tools/command.h"
#include "tools/events/event_printer.h"

#include <cstddef>
#include <memory>

namespace ruvo {

inline constexpr SOption kFormatOption{
    EOptionKind::Choice, "--format",
    "text (default) for reading, json: an object a line, csv: with a header line", "text|json|csv", "text"};
inline constexpr SOption kSpreadsheetOption{
    EOptionKind::Flag, "--spreadsheet",
    "with csv: an apostrophe before every cell that a spreadsheet would take for a formula"};

/// False, with a word about it, when the options do not go together.
[[nodiscard]] bool CheckFormatOptions(const CArguments& arguments, SConsole& console);

/// The printer that the user chose, for relays with names of up to `relayWidth` columns.
[[nodiscard]] std::unique_ptr<IEventPrinter> MakePrinter(const CArguments& arguments, std::size_t relayWidth,
                                                         std::size_t width);

} // namespace ruvo
