// ruvoctl find: the events of an archive that matter.
#include "dayfile/block_parser.h"
#include "tools/archive/archive_schema.h"
#include "tools/archive/find_query.h"
#include "tools/command.h"
#include "tools/events/filter_options.h"
#include "tools/events/format_options.h"
#include "tools/text_encoding.h"

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace ruvo {

namespace {

constexpr int kExitNoneFound = 1;
constexpr int kExitTrouble = 2;

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "DB", "the file that ruvoctl archive --sqlite made"},
    SOption{EOptionKind::Positional, "TEXT",
            "words of the event, its texts, its value or its plant; '' for all events"},
    kFormatOption,
    kSpreadsheetOption,
    kSinceOption,
    kUntilOption,
    kRelayOption,
};

constexpr std::string_view kNotes =
    "All words must be there, in any order and letter case, with or without accents. A word also finds\n"
    "longer ones that begin with it; words in double quotes are one phrase. Events come by time, in the\n"
    "formats of ruvoctl events.\n"
    "Exit status: 0, or 1 when no event was found, or 2 for a mistake in the arguments or an archive that\n"
    "cannot be read.\n\n"
    "Example: which feeders tripped this month?\n"
    "  ruvoctl find site.sqlite 'trip \"earth fault\"' --relay FEED --since 2026-11-01";

/// The records stand in the archive as they stood in the day file: they are read as that is read.
bool PrintRow(const CStatement& row, IEventPrinter& printer, std::string& out) {
    SParsedRecord parsed = ParseDayFileRecord(row.BytesAt(3));
    if (parsed.record == nullptr) {
        return false;
    }
    const SEventSource source{.file = row.TextAt(1), .relay = row.TextAt(0)};
    SDayFileItem item;
    item.offset = static_cast<std::uint64_t>(row.NumberAt(2));
    item.record = std::move(parsed.record);
    item.isExtended = parsed.isExtended;
    printer.PrintRecord(out, source, item);
    return true;
}

std::size_t RelayWidth(CDatabase& database) {
    std::size_t width = 0;
    CStatement relays(database, "SELECT DISTINCT relay FROM files");
    while (relays.Step()) {
        width = std::max(width, ColumnsOf(relays.TextAt(0)));
    }
    return width;
}

/// Begins to read one state of the file, and makes sure that it is an archive, whoever writes it meanwhile.
/// `checked` is the version of the schema that was looked at last; the library goes by it too.
void BeginReading(CDatabase& database, std::optional<std::int64_t>& checked) {
    database.Run("BEGIN");
    const std::int64_t version = database.Number("PRAGMA schema_version");
    if (checked != version) {
        RequireCurrent(database);
        checked = version;
    }
}

/// Prints the records of these ids up to a page's end, from a state that is being read; how many.
std::size_t PrintPage(CDatabase& database, std::span<const std::int64_t> ids, IEventPrinter& printer,
                      std::string& out) {
    constexpr std::size_t kPageSize = std::size_t{128} * 1024; // bytes, before the console hands them on
    CStatement row(database, kFoundRow);
    std::size_t count = 0;
    for (; count < ids.size() && out.size() < kPageSize; ++count) {
        if (!row.Bind(ids[count]).Step() || !PrintRow(row, printer, out)) {
            throw CDatabaseError("a record was changed in it; archive again from the day files");
        }
        row.Rewind();
    }
    return count;
}

/// A reader may take hours over the output, in a pager. Nothing is locked meanwhile: the night's archive run
/// would wait for that in vain.
int Find(const CArguments& arguments, const SFindQuery& query, SConsole& console) {
    CDatabase database(arguments.Get("DB"), EDatabaseAccess::Read);
    std::optional<std::int64_t> checked;
    BeginReading(database, checked);
    const std::vector<std::int64_t> found = FindRecords(database, query);
    const std::unique_ptr<IEventPrinter> printer =
        MakePrinter(arguments, RelayWidth(database), console.width);
    database.Run("COMMIT");
    printer->PrintHead(console.out.Text());
    std::span<const std::int64_t> ids(found);
    while (console.out.IsGood() && !ids.empty()) {
        BeginReading(database, checked); // or each row would lock the file for itself
        ids = ids.subspan(PrintPage(database, ids, *printer, console.out.Text()));
        database.Run("COMMIT");
        console.out.Flush();
    }
    if (found.empty()) {
        console.error.Write("No event found.\n");
    }
    return found.empty() ? kExitNoneFound : kExitGood;
}

int RunFind(const CArguments& arguments, SConsole& console) {
    SEventFilter filter;
    if (!TakeFilterOptions(arguments, console, filter) || !CheckFormatOptions(arguments, console)) {
        return kExitUsage;
    }
    const SFindQuery query{.text = SystemTextToUtf8(arguments.Get("TEXT")),
                           .since = arguments.Get("--since"),
                           .until = arguments.Get("--until"),
                           .relay = arguments.Get("--relay"),
                           .filter = filter};
    if (!query.text.empty() && FullTextQuery(query.text).empty()) {
        console.error.Write("ruvoctl find: no letter and no digit to look for in \"" +
                            EscapeControls(query.text) + "\"; '' shows all events\n");
        return kExitUsage;
    }
    try {
        return Find(arguments, query, console);
    } catch (const CDatabaseError& failure) {
        console.out.Flush();
        console.error.Write(
            "ruvoctl: " + EscapeControls(SystemTextToUtf8(arguments.Get("DB") + ": " + failure.what())) +
            "\n");
        return kExitTrouble;
    }
}

} // namespace

SCommand FindCommand() {
    return {.name = "find",
            .summary = "Find events in an archive",
            .notes = kNotes,
            .options = kOptions,
            .run = RunFind,
            .failureStatus = kExitTrouble};
}

} // namespace ruvo
