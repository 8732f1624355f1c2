// The options that select the output format, shared by all commands that print records.
#pragma once

#include "tools/command.h"
#include "tools/events/event_printer.h"

#include <cstddef>
#include <memory>

namespace ruvo {

inline constexpr SOption kFormatOption{
    EOptionKind::Choice, "--format", "text (default), json (one object per line) or csv (with a header line)",
    "text|json|csv", "text"};
inline constexpr SOption kSpreadsheetOption{
    EOptionKind::Flag, "--spreadsheet",
    "with csv: mark the file as UTF-8, and prefix an apostrophe to texts that a spreadsheet would read as "
    "formulas"};
inline constexpr SOption kDecimalCommaOption{
    EOptionKind::Flag, "--decimal-comma",
    "with csv: write 1,5 and separate columns with semicolons, as spreadsheets of many countries expect"};

/// Reports options that contradict each other and returns false.
[[nodiscard]] bool CheckFormatOptions(const CArguments& arguments, SConsole& console);

[[nodiscard]] SCsvForm CsvFormOf(const CArguments& arguments);

/// The printer that the user chose, for relays with names of up to `relayWidth` columns.
[[nodiscard]] std::unique_ptr<IEventPrinter> MakePrinter(const CArguments& arguments, std::size_t relayWidth,
                                                         std::size_t width);

} // namespace ruvo
