// ruvoctl find: searches the events of an archive.
#include "dayfile/block_parser.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "tools/archive/archive_schema.h"
#include "tools/archive/find_query.h"
#include "tools/command.h"
#include "tools/events/fetched_option.h"
#include "tools/events/filter_options.h"
#include "tools/events/format_options.h"
#include "tools/sites/site.h"
#include "tools/text_encoding.h"
#include "tools/typed_path.h"

#include <array>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ruvo {

namespace {

constexpr int kExitNoneFound = 1;
constexpr int kExitTrouble = 2;

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "DB", "archive file written by \"ruvoctl archive --sqlite\""},
    SOption{EOptionKind::Positional, "TEXT",
            "words from the event, its texts, its value or its plant; '' for all events"},
    kFormatOption,
    kSpreadsheetOption,
    kDecimalCommaOption,
    kSinceOption,
    kUntilOption,
    kFetchedOption,
    kRelayOption,
    kClocksOption,
    SOption{EOptionKind::Text, "--site", "only the site of this name, or of this INI file", "NAME|SITE.ini"},
};

constexpr std::string_view kNotes =
    R"(An event matches if it contains all words, in any order; case and accents do not matter. A word also
matches longer words that start with it; words in double quotes match as a phrase. Events are printed in
order of time, in the formats of ruvoctl events.
--fetched takes what came in from the records of a site's visits: those of the INI file that --site names,
else of the one with the site's name in the machine's folder for sites. Without such records, a day file
counts by the UTC day in its name; a message says so.
Exit status: 0 on success, 1 if no event matches, 2 on a usage error or if the archive cannot be read.

Example: which feeders tripped this month?
  ruvoctl find site.sqlite 'trip "earth fault"' --relay FEED --since 2026-11-01)";

/// What came in at the sites of an archive within a time.
class CFetchedOfSites {
public:
    /// Of one site, its INI file may be known; else the path is empty.
    CFetchedOfSites(SPeriod period, std::string fullIniPath, SConsole& console)
        : m_period(period), m_iniPath(std::move(fullIniPath)), m_console(console) {}

    SFetchedBytes Of(const std::string& site, const std::string& dayFile) {
        auto known = m_sites.find(site);
        if (known == m_sites.end()) {
            known = m_sites.emplace(site, Read(site)).first;
        }
        SFetchedBytes bytes = known->second.OfName(dayFile);
        m_wholeCount += bytes.isWhole ? 1 : 0;
        return bytes;
    }
    void TellWhole() const { TellWholeFiles(m_wholeCount, m_console); }

private:
    [[nodiscard]] CFetchedBytes Read(const std::string& name) const {
        const std::vector<std::string> paths =
            m_iniPath.empty() ? FindSites().iniPaths : std::vector{m_iniPath};
        for (const std::string& ini : paths) {
            if (const CSite site(ini); site.Name() == name && site.Places()) {
                return ReadFetchedBytes(site.Places()->events, m_period, m_console);
            }
        }
        return CFetchedBytes(m_period);
    }

    SPeriod m_period;
    std::string m_iniPath;
    SConsole& m_console;
    std::map<std::string, CFetchedBytes> m_sites; ///< by name
    std::size_t m_wholeCount = 0;
};

/// The archive stores records as they are in the day file, so the same parser reads them.
bool PrintRow(const CStatement& row, const CRelayClocks& clocks, IEventPrinter& printer, std::string& out) {
    SParsedRecord parsed = ParseDayFileRecord(row.BytesAt(3));
    if (parsed.record == nullptr) {
        return false;
    }
    SEventSource source{.file = row.TextAt(1), .relay = row.TextAt(0), .site = row.TextAt(4)};
    source.clock = clocks.ClockOf(source.site, source.relay);
    SDayFileItem item;
    item.offset = static_cast<std::uint64_t>(row.NumberAt(2));
    item.record = std::move(parsed.record);
    item.isExtended = parsed.isExtended;
    printer.PrintRecord(out, source, item);
    return true;
}

std::size_t RelayWidth(CDatabase& database) {
    std::size_t width = 0;
    CStatement relays(database, "SELECT name FROM relays");
    while (relays.Step()) {
        width = std::max(width, ColumnsOf(relays.TextAt(0)));
    }
    return width;
}

/// Starts a read transaction and verifies that the file is an archive, even if another program writes it
/// meanwhile. `checked` is the schema version that was verified last; SQLite compares the same number.
void BeginReading(CDatabase& database, std::optional<std::int64_t>& checked) {
    database.Run("BEGIN");
    const std::int64_t version = database.Number("PRAGMA schema_version");
    if (checked != version) {
        RequireCurrent(database);
        checked = version;
    }
}

/// Prints the records of these ids until a page is full, within a read transaction. Returns their number.
std::size_t PrintPage(CDatabase& database, std::span<const std::int64_t> ids, const CRelayClocks& clocks,
                      IEventPrinter& printer, std::string& out) {
    constexpr std::size_t kPageSize = std::size_t{128} * 1024; // bytes, before they go to the console
    CStatement row(database, kFoundRow);
    std::size_t count = 0;
    for (; count < ids.size() && out.size() < kPageSize; ++count) {
        if (!row.Bind(ids[count]).Step() || !PrintRow(row, clocks, printer, out)) {
            throw CDatabaseError("a record in it was modified; create the archive again from the day files");
        }
        row.Rewind();
    }
    return count;
}

/// A user may read the output in a pager for hours. Nothing stays locked meanwhile: the night's archive run
/// would time out.
int Find(const CArguments& arguments, const SFindQuery& query, const CRelayClocks& clocks,
         SConsole& console) {
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
        BeginReading(database, checked); // else each row would lock the file separately
        ids = ids.subspan(PrintPage(database, ids, clocks, *printer, console.out.Text()));
        database.Run("COMMIT");
        console.out.Flush();
    }
    if (found.empty()) {
        console.error.Write("No matching event.\n");
    }
    return found.empty() ? kExitNoneFound : kExitGood;
}

int RunFind(const CArguments& arguments, SConsole& console) {
    SEventFilter filter;
    CRelayClocks clocks;
    if (!ParseFilterOptions(arguments, console, filter) || !CheckFormatOptions(arguments, console) ||
        !ReadClocks(arguments, console, clocks)) {
        return kExitUsage;
    }
    const std::string given = arguments.Get("--site");
    const std::string ini = EqualIniNames(SplitPath(given).extension, ".ini") ? TypedPath(given) : "";
    SFindQuery query{.text = SystemTextToUtf8(arguments.Get("TEXT")),
                     .since = filter.sinceText,
                     .until = filter.untilText,
                     .relay = arguments.Get("--relay"),
                     .site = ini.empty() ? SystemTextToUtf8(given) : CSite(ini).Name(),
                     .filter = filter,
                     .fetched = {}};
    std::optional<SPeriod> period;
    if (!ParseFetchedOption(arguments, console, period)) {
        return kExitUsage;
    }
    CFetchedOfSites fetched(period.value_or(SPeriod()), ini, console);
    if (period) {
        query.fetched = [&fetched](const std::string& site, const std::string& dayFile) {
            return fetched.Of(site, dayFile);
        };
    }
    if (!query.text.empty() && FullTextQuery(query.text).empty()) {
        console.error.Write("ruvoctl find: no letter or digit to search for in \"" +
                            EscapeControls(query.text) + "\"; '' shows all events\n");
        return kExitUsage;
    }
    try {
        const int status = Find(arguments, query, clocks, console);
        fetched.TellWhole();
        return status;
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
