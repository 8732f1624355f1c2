// ruvoctl recover: lists what ended runs have left of a site's events, and appends set-aside files.
#include "base/text.h"
#include "ledger/root_folder.h"
#include "ledger/set_aside_append.h"
#include "ledger/visit_record.h"
#include "log/error_log.h"
#include "log/ledger_lines.h"
#include "platform/full_path.h"
#include "platform/state_folder.h"
#include "run/relay_entry.h"
#include "tools/command.h"
#include "tools/ini/site_environment.h"
#include "tools/ini/site_user.h"
#include "tools/recover/site_leftovers.h"
#include "tools/text_encoding.h"
#include "tools/typed_path.h"

#include <algorithm>
#include <array>
#include <optional>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "INI",
            "INI file of the site; a relative path is resolved against the current folder"},
    SOption{EOptionKind::MoreFiles, "FILE", "set-aside files to store in their day files, as listed"},
    SOption{EOptionKind::Text, "--from",
            "take over what is left of another event root: a path that the INI file named earlier, or the "
            "folder that the list names",
            "OLDROOT"},
    SOption{EOptionKind::Choice, "--format",
            "format of the list: text (default) or json (one object per line)", "text|json", "text"},
};

constexpr std::string_view kNotes =
    R"(Without FILE and --from, lists the events that relays have delivered and that are not in a day file, and
the folder of each event root: set-aside files, and visits that wait in the journals of runs that have
ended. The next run stores the latter by itself. Other event roots are listed if something is left of
them, or if their folder cannot be read. Changes nothing.
With FILE, appends the events of these set-aside files to their day files, as a visit does, and renames
each file to FILE.done. Doing it twice, or after an interruption, stores nothing twice. Messages also go
to the error log.
With --from, stores what waits in the journals of OLDROOT in the day files of the INI file's event root,
and moves its set-aside files to those of this event root. If OLDROOT still exists, its events stay
in its own day files. FILE can then name set-aside files of OLDROOT.
Started by root, it continues as the user of the visits, with a fresh environment: as ruvo for a site of
/etc/ruvo, for another file as the owner of its event root (or of the nearest existing parent). Only that
user and root may then be able to write the file and the folders that lead to it.
Exit status: 0 on success, 1 if something could not be read or stored, 2 on a usage error.

Example: what is left, then store one file
  ruvoctl recover /etc/ruvo/yard.ini
  ruvoctl recover /etc/ruvo/yard.ini AB12-0001-2026-11-16-DEV-1.setaside)";

std::string Shown(const std::string& path) {
    return EscapeControls(SystemTextToUtf8(DisplayPath(path)));
}

class CRecovery {
public:
    CRecovery(std::string eventRoot, std::string iniPath, SConsole& console)
        : m_eventRoot(std::move(eventRoot)), m_iniPath(std::move(iniPath)), m_console(console),
          m_ledger(m_eventRoot,
                   [this](const SLedgerReport& report) {
                       LogLedgerReport(report);
                       Record(report);
                       m_console.out.Write(EscapeControls(SystemTextToUtf8(LedgerText(report))) + "\n");
                   }),
          m_folder(m_ledger.FolderForSetAside()) {}

    [[nodiscard]] bool CanWork() const { return !m_folder.empty(); }

    /// Takes over the folder of another event root, or of this one where it still exists.
    void TakeOver(const std::string& folder) {
        m_ledger.BringInFrom(folder);
        const SListedFiles files = SetAsideFilesIn(folder), journals = JournalsIn(folder);
        if (!files.isRead || !journals.isRead) {
            Fail(folder, "cannot be read");
        }
        for (const std::string& path : files.paths) {
            if (folder == m_folder) {
                continue;
            }
            const std::string moved = AdoptSetAsideFile(path, m_folder);
            if (moved.empty()) {
                Fail(path, "cannot be moved to " + Shown(m_folder));
            } else {
                m_moved.emplace_back(path, moved);
                m_console.out.Write(Shown(path) + " is " + Shown(moved) + " now.\n");
            }
        }
        m_isWhole = m_isWhole && journals.paths.empty();
    }

    void Append(const std::string& typed) {
        const std::string path = PathOf(typed);
        const SListedFiles files = SetAsideFilesIn(m_folder);
        if (std::ranges::find(files.paths, path) == files.paths.end()) {
            Fail(path, files.isRead
                           ? "is no set-aside file of this event root; run ruvoctl recover INI to list them"
                           : "is in a folder that cannot be read");
            return;
        }
        const SAppendedFile appended = AppendSetAsideFile(m_ledger, m_eventRoot, path);
        if (!appended.failure.empty()) {
            Fail(path, EscapeControls(SystemTextToUtf8(appended.failure)));
            return;
        }
        Record({.outcome = ELedgerOutcome::Stored,
                .events = appended.events,
                .path = appended.dayFile,
                .journal = {},
                .key = appended.key,
                .begun = {},
                .reason = {},
                .from = appended.from,
                .to = appended.to});
        m_console.out.Write(Counted(appended.events, "event") + (appended.events == 1 ? " is" : " are") +
                            " in day file " + Shown(appended.dayFile) + " now.\n");
        if (appended.damageAt) {
            Fail(path + std::string(kAppendedEnding), "damage at byte " + std::to_string(*appended.damageAt) +
                                                          "; what could not be read is still there");
        }
    }

    /// The exit status.
    [[nodiscard]] int End() {
        if (m_record) {
            SVisitLine end;
            end.ended = ERunEnd::Whole;
            end.logLines = ErrorLogLines();
            m_record->End(end);
        }
        return m_isWhole ? kExitGood : kExitFailed;
    }

private:
    /// What came into day files is news, as what a visit brings. The record is made with the first of it.
    void Record(const SLedgerReport& report) {
        if (!report.IsStored()) {
            return;
        }
        if (!m_record) {
            m_record.emplace(m_eventRoot, m_iniPath, SVisitBounds(), ERunKind::Recover);
            m_record->Begin();
        }
        NoteRecovered(&*m_record, report);
    }
    /// A name alone is one in the event root's folder.
    [[nodiscard]] std::string PathOf(const std::string& typed) const {
        const bool isName = typed.find_first_of("/\\") == std::string::npos;
        const std::string path = isName ? m_folder + "\\" + typed : TypedPath(typed);
        const auto moved = std::ranges::find_if(m_moved, [&](const auto& row) {
            return row.first == path || (isName && row.first.ends_with("\\" + typed));
        });
        return moved == m_moved.end() ? path : moved->second;
    }

    void Fail(const std::string& path, const std::string& why) {
        m_console.error.Write("ruvoctl: " + Shown(path) + ": " + why + "\n");
        m_isWhole = false;
    }

    std::string m_eventRoot;
    std::string m_iniPath;
    SConsole& m_console;
    std::optional<CVisitRecord> m_record;

    CRunLedger m_ledger;
    std::string m_folder;
    std::vector<std::pair<std::string, std::string>> m_moved; ///< from where to where
    bool m_isWhole = true;
};

int List(const CArguments& arguments, const std::string& eventRoot, SConsole& console) {
    CRootLeftovers known;
    const SSiteLeftovers leftovers = FindLeftovers(eventRoot, "", EOtherRoots::All, known);
    console.out.Write(arguments.Get("--format") == "json" ? LeftoversAsJson(leftovers)
                                                          : LeftoversAsText(leftovers));
    return leftovers.IsRead() ? kExitGood : kExitFailed;
}

int Refuse(SConsole& console, const std::string& why) {
    console.error.Write("ruvoctl: " + why + "\n");
    return kExitFailed;
}

int Store(const CArguments& arguments, const std::string& ownRoot, SConsole& console) {
    std::string eventRoot = ownRoot;
    const std::string from = arguments.Get("--from");
    std::string folder;
    if (!from.empty()) {
        const auto found = FindRootFolder(StateFolder(), from);
        if (!found) {
            return Refuse(console, "the state folder " + Shown(StateFolder()) + " cannot be read in whole");
        }
        folder = *found;
        if (folder.empty()) {
            return Refuse(console, "nothing is left of " + EscapeControls(SystemTextToUtf8(from)) + " in " +
                                       Shown(StateFolder()));
        }
        const auto noted = EventRootOf(folder);
        if (!noted) {
            return Refuse(console, Shown(folder) + ": the note of its event root cannot be read");
        }
        const std::string oldRoot = FullPath(*noted);
        const bool isThere = GetPathKind(oldRoot) == EPathKind::Folder;
        eventRoot = isThere && FolderOfJournals(oldRoot) == folder ? oldRoot : ownRoot;
    }
    CRecovery recovery(eventRoot, TypedPath(arguments.Get("INI")), console);
    if (!recovery.CanWork()) {
        return Refuse(console, "the state folder " + Shown(StateFolder()) + " cannot be used");
    }
    if (!folder.empty()) {
        recovery.TakeOver(folder);
    }
    for (const std::string& file : arguments.GetAll("FILE")) {
        recovery.Append(file);
    }
    return recovery.End();
}

/// What was typed, as it is understood in another folder.
std::vector<std::string> FullWords(const CArguments& arguments) {
    const auto full = [](const std::string& typed) {
        const bool isName = typed.find_first_of("/\\") == std::string::npos;
        return isName ? typed : DisplayPath(FullPath(typed));
    };
    std::vector<std::string> words{"recover", "--format=" + arguments.Get("--format")};
    if (arguments.Has("--from")) {
        words.push_back("--from=" + full(arguments.Get("--from")));
    }
    words.insert(words.end(), {"--", DisplayPath(FullPath(arguments.Get("INI")))});
    for (const std::string& file : arguments.GetAll("FILE")) {
        words.push_back(full(file));
    }
    return words;
}

int RunRecover(const CArguments& arguments, SConsole& console) {
    const std::string typed = arguments.Get("INI");
    static_cast<void>(ApplySiteEnvironment(typed));
    const auto places = ReadSitePlaces(TypedPath(typed)); // which also finds the error log for the messages
    const std::string events = places ? FullPath(places->events) : std::string();
    if (events.empty()) {
        return Refuse(console, "cannot resolve the paths of this file; run ruvoctl check to see why");
    }
    const bool stores = arguments.Has("FILE") || arguments.Has("--from");
    const SSiteUser site = FindSiteUser(TypedPath(typed), *places);
    if (stores && !site.refusal.empty()) { // a list makes nothing
        return Refuse(console, site.refusal);
    }
    if (site.user) {
        return Refuse(console, "cannot continue as user " + site.user->name + ": " +
                                   ContinueAs(*site.user, FullWords(arguments)));
    }
    return stores ? Store(arguments, events, console) : List(arguments, events, console);
}

} // namespace

SCommand RecoverCommand() {
    return {"recover", "List and store events that are not in a day file", kNotes, kOptions, RunRecover};
}

} // namespace ruvo
