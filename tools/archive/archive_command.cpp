// ruvoctl archive: copies all records of an event root into a database, or writes them as lines of JSON.
#include "base/text.h"
#include "dayfile/day_file_reader.h"
#include "tools/archive/archive_row.h"
#include "tools/archive/archive_store.h"
#include "tools/archive/line_output.h"
#include "tools/archive/new_records.h"
#include "tools/command.h"
#include "tools/events/day_file_walk.h"
#include "tools/events/event_files.h"
#include "tools/events/fetched_option.h"
#include "tools/file_path.h"
#include "tools/marks.h"
#include "tools/progress.h"
#include "tools/text_encoding.h"

#include <array>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <utility>

namespace ruvo {

namespace {

namespace fs = std::filesystem;

constexpr std::array kOptions{
    SOption{EOptionKind::Files, "EVENTROOT",
            "the folder that contains the day files, at any depth, or the INI file of a site; or several"},
    SOption{EOptionKind::Text, "--site",
            "name of the site (default: the name of the INI file or of the event root)", "NAME"},
    SOption{EOptionKind::Text, "--sqlite", "add the records to this archive; created if missing", "FILE"},
    SOption{EOptionKind::Text, "--ndjson",
            "write all records to this file, one JSON object per line; - for standard output", "FILE"},
    SOption{EOptionKind::Text, "--new",
            "with --ndjson: write only records that no earlier run with this name has written", "NAME"},
    kFetchedOption,
};

constexpr std::string_view kNotes =
    R"(With --sqlite, day files that have not changed since an earlier run are skipped; from others only new
records are added. Records are never removed from an archive: a record that is no longer in its day file
stays, and a message says so. An archive may hold several sites: under another name, a site is another one
to it. docs/archive.md describes the tables, and how to load the output of --ndjson into other databases.
With --new, the output has only what is new under that name; the next run goes on from there once the output
has been written whole, without any failure.
--fetched works as for ruvoctl events; the next run without it adds what it left out. It does not go with
--new, whose mark would move past what was left out.
Exit status: 0 on success, 1 if something could not be read or written, 2 on a usage error.

Example: after each night's run
  ruvoctl archive events/ --sqlite site.sqlite && ruvoctl find site.sqlite trip --since 2026-11-16)";

/// One run over the files, into one or both outputs.
class CArchiveRun {
public:
    CArchiveRun(SConsole& console, CArchiveStore* store, CLineOutput* lines, CNewRecords* marks)
        : m_console(console), m_store(store), m_lines(lines), m_marks(marks) {}

    void Read(const SFoundFiles& found) {
        for (const std::string& failure : found.failures) {
            ReportFailure(failure);
        }
        m_progress.emplace(m_console, found.files.size());
        for (const SFoundFile& file : found.files) {
            ++m_names[{file.site, FilePath(file.path).filename().string()}];
            m_relays[file.site].insert(file.relay);
        }
        for (const SFoundFile& file : found.files) {
            if (m_lines == nullptr || m_lines->Text().IsGood()) {
                ReadFile(file);
            }
            ++m_filesDone;
        }
        if (m_store != nullptr) {
            m_store->Finish();
        }
        m_progress.reset();
    }
    void ReportFailure(const std::string& what) {
        Report(what);
        m_isGood = false;
    }
    [[nodiscard]] bool IsGood() const { return m_isGood; }
    [[nodiscard]] std::string Summary() const {
        std::string text =
            Counted(m_read, "day file") + " read, " + std::to_string(m_unchanged) + " unchanged; ";
        text += m_store != nullptr
                    ? Counted(m_added, "record") + " added, " + std::to_string(m_known) + " already archived"
                    : Counted(m_records, "record");
        return text + "; " + Counted(m_damaged, "damaged place") + "\n";
    }

private:
    void ReadFile(const SFoundFile& file) {
        std::error_code error;
        const fs::path path = FilePath(file.path);
        const std::string name = path.filename().string();
        // Taken before the file is read: a change in between is then seen by the next run.
        const SDayFileState state{.name = SystemTextToUtf8(name),
                                  .relay = file.relay,
                                  .day = DayOfFileName(name),
                                  .size = fs::file_size(path, error),
                                  .changed = fs::last_write_time(path, error).time_since_epoch().count()};
        if (m_store != nullptr && m_site != file.site) {
            m_site = file.site;
            m_store->BeginSite(file.site, m_relays[file.site]);
        }
        if (IsUnchanged(file.path, state, !error)) {
            ++m_unchanged;
            return;
        }
        if (const SFileResult opened = m_reader.Open(file.path); !opened.Good()) {
            ReportFailure(file.path + ": " + SystemErrorText(opened.systemCode));
            return;
        }
        ++m_read;
        if (m_store != nullptr) {
            m_store->BeginFile(state);
        }
        const bool isComplete = ReadItems(file, state);
        m_bytes += m_reader.Position();
        if (m_marks != nullptr && isComplete) {
            m_marks->End();
        }
        if (!isComplete) {
            ReportFailure(file.path + ": could not be read to the end");
        }
        if (m_store != nullptr) {
            EndFile(file, isComplete);
        }
    }

    /// Begins the file for the marks. One whose state is not known is read.
    bool IsUnchanged(const std::string& path, const SDayFileState& state, bool isStateKnown) {
        if (isStateKnown && m_store != nullptr && m_lines == nullptr && m_store->IsUnchanged(state)) {
            return true;
        }
        return m_marks != nullptr && !m_marks->Begin(path, isStateKnown ? state.size : 0, state.changed) &&
               isStateKnown;
    }

    bool ReadItems(const SFoundFile& file, const SDayFileState& state) {
        const SArchivePlace place{.site = file.site, .relay = state.relay, .dayFile = state.name};
        bool isComplete = true;
        SDayFileItem item;
        while (m_reader.Next(item)) {
            const bool counts = Counts(file, item);
            const bool isNew = m_marks == nullptr || m_marks->IsNew(item);
            if (item.record != nullptr && isNew && counts) {
                WriteRecord(place, item);
            }
            if (item.damage) {
                m_damaged += counts ? 1 : 0;
                isComplete = isComplete && item.damage->fault != EDayFileFault::ReadFailed;
                if (m_store != nullptr) {
                    m_store->AddDamage(*item.damage);
                }
            }
            m_progress->Update(m_filesDone, m_bytes + m_reader.Position());
        }
        return isComplete;
    }

    void WriteRecord(const SArchivePlace& place, const SDayFileItem& item) {
        ++m_records;
        if (m_store != nullptr) {
            m_store->AddRecord(item);
        }
        if (m_lines != nullptr) {
            if (m_lines->IsStandard()) {
                m_progress->GiveWayToOutput();
            }
            AppendJsonLine(m_lines->Text().Text(), place, MakeArchiveRow(item));
            m_lines->Text().FlushIfFull();
        }
    }

    void EndFile(const SFoundFile& file, bool isComplete) {
        const bool isWhole = isComplete && (file.fetched == nullptr || file.fetched->isWhole);
        const SFileTally tally = m_store->EndFile(isWhole);
        m_added += tally.added;
        m_known += tally.known;
        // Two files of the same name need not hold each other's records.
        const bool isOnlyOne = m_names[{file.site, FilePath(file.path).filename().string()}] == 1;
        if (isWhole && isOnlyOne && tally.gone > 0) {
            Report(file.path + ": changed: " + Counted(tally.gone, "archived record") +
                   " no longer in the file; kept in the archive");
        }
    }

    void Report(const std::string& what) {
        if (m_progress) {
            m_progress->Clear();
        }
        m_console.error.Write("ruvoctl: " + EscapeControls(SystemTextToUtf8(what)) + "\n");
        m_console.error.Flush();
    }

    SConsole& m_console;
    CArchiveStore* m_store; ///< null for none
    CLineOutput* m_lines;   ///< null for none
    CNewRecords* m_marks;   ///< null for all records
    CDayFileReader m_reader;
    std::optional<CProgress> m_progress;                        ///< while files are read
    std::map<std::pair<std::string, std::string>, int> m_names; ///< how many files of a site have each name
    std::map<std::string, std::set<std::string>> m_relays;      ///< by site
    std::optional<std::string> m_site;                          ///< of the last file
    std::size_t m_filesDone = 0;
    std::uint64_t m_bytes = 0;
    std::uint64_t m_read = 0;
    std::uint64_t m_unchanged = 0;
    std::uint64_t m_records = 0;
    std::uint64_t m_added = 0;
    std::uint64_t m_known = 0;
    std::uint64_t m_damaged = 0;
    bool m_isGood = true;
};

int RunInto(const SFoundFiles& found, CArchiveStore* store, CLineOutput* lines, CNewRecords* marks,
            SConsole& console) {
    CArchiveRun run(console, store, lines, marks);
    run.Read(found);
    if (lines != nullptr) {
        if (const std::string failure = lines->Finish(run.IsGood()); !failure.empty()) {
            run.ReportFailure(failure);
        }
        if (marks != nullptr && run.IsGood() && lines->Text().IsGood()) {
            if (const std::string failure = marks->Save(); !failure.empty()) {
                run.ReportFailure(failure);
            }
        }
    }
    CTextOutput& out = lines != nullptr && lines->IsStandard() ? console.error : console.out;
    out.Write(run.Summary());
    return run.IsGood() ? kExitGood : kExitFailed;
}

/// The day files, each with its site. Reports one whose site is not known and returns false.
bool FindFiles(const CArguments& arguments, SFoundFiles& found, SConsole& console) {
    found = FindDayFiles(arguments.GetAll("EVENTROOT"));
    const std::string site = SystemTextToUtf8(arguments.Get("--site"));
    for (SFoundFile& file : found.files) {
        file.site = site.empty() ? file.site : site;
        if (file.site.empty()) {
            console.error.Write("ruvoctl archive: " + EscapeControls(SystemTextToUtf8(file.path)) +
                                ": no folder or INI file names its site; use --site NAME\n");
            return false;
        }
    }
    return true;
}

/// What is wrong with the options; empty when nothing is.
std::string_view MistakeIn(const CArguments& arguments) {
    const bool hasDatabase = !arguments.Get("--sqlite").empty();
    const bool hasLines = !arguments.Get("--ndjson").empty();
    if (!hasDatabase && !hasLines) {
        return "no output given; use --sqlite FILE, --ndjson FILE or --ndjson -";
    }
    if (!arguments.Has("--new")) {
        return {};
    }
    if (hasDatabase || !hasLines || !IsMarkName(arguments.Get("--new"))) {
        return "--new takes a name of letters, digits, \"-\", \"_\" and \".\", and goes with --ndjson alone";
    }
    return arguments.Has("--fetched") ? "expected only one of --new and --fetched" : "";
}

int RunArchive(const CArguments& arguments, SConsole& console) {
    const std::string database = arguments.Get("--sqlite");
    const std::string linesPath = arguments.Get("--ndjson");
    if (const std::string_view mistake = MistakeIn(arguments); !mistake.empty()) {
        console.error.Write("ruvoctl archive: " + std::string(mistake) + "\n");
        return kExitUsage;
    }
    std::optional<CNewRecords> marks;
    if (arguments.Has("--new")) {
        marks.emplace(arguments.Get("--new"));
        if (!marks->Failure().empty()) {
            console.error.Write("ruvoctl: " + EscapeControls(marks->Failure()) + "\n");
            return kExitFailed;
        }
    }
    SFoundFiles found;
    if (!FindFiles(arguments, found, console) || !KeepFetched(arguments, console, found)) {
        return kExitUsage;
    }
    try {
        std::optional<CArchiveStore> store;
        std::optional<CLineOutput> lines;
        if (!database.empty()) {
            store.emplace(database);
        }
        if (!linesPath.empty()) {
            lines.emplace(linesPath, console);
        }
        return RunInto(found, store ? &*store : nullptr, lines ? &*lines : nullptr, marks ? &*marks : nullptr,
                       console);
    } catch (const CDatabaseError& failure) {
        console.error.Write("ruvoctl: " + EscapeControls(SystemTextToUtf8(database + ": " + failure.what())) +
                            "\n");
        return kExitFailed;
    }
}

} // namespace

SCommand ArchiveCommand() {
    return {"archive", "Collect all records in one database", kNotes, kOptions, RunArchive};
}

} // namespace ruvo
