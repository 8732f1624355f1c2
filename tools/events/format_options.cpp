#include "tools/events/format_options.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::size_t kNarrowestRelay = 5; ///< the column's head
constexpr std::size_t kWidestRelay = 24;
constexpr std::size_t kNarrowestRest = 46; ///< what the text's other columns need

} // namespace

bool CheckFormatOptions(const CArguments& arguments, SConsole& console) {
    if (arguments.Get("--format") == "csv") {
        return true;
    }
    for (const std::string_view option : {kSpreadsheetOption.name, kDecimalCommaOption.name}) {
        if (arguments.Has(option)) {
            console.error.Write(std::string(option) + " requires --format csv\n");
            return false;
        }
    }
    return true;
}

SCsvForm CsvFormOf(const CArguments& arguments) {
    return {.forSpreadsheets = arguments.Has("--spreadsheet"),
            .decimalComma = arguments.Has("--decimal-comma")};
}

std::unique_ptr<IEventPrinter> MakePrinter(const CArguments& arguments, std::size_t relayWidth,
                                           std::size_t width) {
    const std::string format = arguments.Get("--format");
    if (format == "json") {
        return MakeJsonPrinter();
    }
    if (format == "csv") {
        return MakeCsvPrinter(CsvFormOf(arguments));
    }
    const std::size_t wanted = std::max(relayWidth, kNarrowestRelay);
    return MakeTextPrinter(width, std::min({wanted, kWidestRelay, width - kNarrowestRest}));
}

} // namespace ruvo
