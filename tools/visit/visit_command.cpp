// ruvoctl visit: visits one site and reports the result in its exit status.
#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "platform/sites_folder.h"
#include "platform/standard_streams.h"
#include "platform/terminal.h"
#include "tools/command.h"
#include "tools/ini/site_user.h"
#include "tools/text_encoding.h"
#include "tools/visit/visit.h"

#include <array>

namespace ruvo {

namespace {

constexpr int kRefused = static_cast<int>(EVisitStatus::Refused);
constexpr std::string_view kIniExtension = ".ini";

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "SITE",
            "a site of the folder for sites: /etc/ruvo/SITE.ini (Windows: %ProgramData%\\ruvo\\SITE.ini); "
            "SITE.ini means the same. Or another file: a path, as in ./SITE.ini"},
    SOption{EOptionKind::Flag, "--check", "visit no relay, only check the configuration"},
    SOption{EOptionKind::Text, "--test", "visit no relay, only test the connection to this one", "KEY"},
};

constexpr std::string_view kNotes =
    R"(Runs ruvo, the extractor beside this program, for one site, and awaits it. The extractor itself always
exits with 0 and writes problems only to the error log; this command is for schedulers. It prints the lines
that the error log has got meanwhile, and what the extractor prints; otherwise nothing.
SITE.env next to SITE.ini is the environment of the comms server: lines of NAME=value, passed on
literally. RUVO_LOCK_DIR, RUVO_STATE_DIR, RUVO_SITE, RUVO_INI_NAME and XDG_STATE_HOME are refused there,
because with them a site could be visited twice at the same time, or recorded as another one. A file that
another user may have written is refused as a whole: it must be owned by root or by the user of the visit,
and only its owner may be able to write it. The visit takes place even if something is refused. (On
Windows, there is no such file.)
Started by root, it continues as another user, with a fresh environment, before it writes anything: as
ruvo for a site of /etc/ruvo, for another file as the owner of its event root (or of the nearest existing
parent). Only that user and root may then be able to create or write the file, its .env file and the
folders and links that lead to them; if that user is root, the same applies to the events and the log.
TERM, INT and HUP (on Windows, a request to close the program) are passed on to the extractor, which then
ends in good order.
Exit status: 0 good; 1 the visit wrote lines to the error log; 2 the site's configuration does not allow a
visit, part of it was refused, or the extractor printed something: it could not start, a line of the error
log was lost, or no journal could be created; 3 a signal ended the visit, so relays may not have been
visited; 4 another visit of the site is going on, and this one did nothing; another status is that of
an extractor that crashed. With --test, it is that of ruvoctl test.

Example: as the unit of the site does, after a change
  ruvoctl visit yard --check && ruvoctl visit yard)";

/// Empty for a path that no visit takes; the extractor would use another file.
std::string IniPathOf(const std::string& typed) {
    const bool hasEnding = EqualIniNames(SplitPath(typed).extension, kIniExtension);
    if (typed.find_first_of("/\\:") != std::string::npos) {
        return hasEnding ? FullPath(typed) : std::string();
    }
    return FullPath(SitesFolder() + "\\" + (hasEnding ? SplitPath(typed).name : typed) +
                    std::string(kIniExtension));
}

/// What was typed, as it is understood in another folder.
std::vector<std::string> FullWords(const CArguments& arguments, const std::string& iniPath) {
    std::vector<std::string> words{"visit"};
    if (arguments.Has("--check")) {
        words.emplace_back("--check");
    }
    if (arguments.Has("--test")) {
        words.push_back("--test=" + arguments.Get("--test"));
    }
    words.insert(words.end(), {"--", DisplayPath(iniPath)});
    return words;
}

/// In folders of others, root would follow their links, and create files that they cannot write. Returns why
/// it cannot continue; empty when this process is to.
std::string ContinueAsSiteUser(const CArguments& arguments, const std::string& iniPath) {
    if (!IsRoot()) {
        return {};
    }
    const SSiteUser site = FindSiteUser(iniPath, ReadSitePlaces(iniPath));
    if (!site.user) {
        return site.refusal;
    }
    return "cannot continue as user " + site.user->name + ": " +
           ContinueAs(*site.user, FullWords(arguments, iniPath));
}

std::string WhyNotReadable(const std::string& iniPath) {
    CFile file;
    const SFileResult result = file.Open(iniPath, {.read = true});
    return result.Good() ? std::string() : SystemErrorText(result.systemCode);
}

int RunVisit(const CArguments& arguments, SConsole& console) {
    IgnoreClosedPipes(); // the extractor is not left alone because nobody reads
    CVisitOutput output(console, IsSystemJournal(EStandardStream::Output),
                        IsSystemJournal(EStandardStream::Error));
    const auto refuse = [&output](const std::string& why) {
        output.Complain(why);
        return kRefused;
    };
    const std::string typed = arguments.Get("SITE");
    const std::string iniPath = IniPathOf(typed);
    if (iniPath.empty()) {
        return refuse(SystemTextToUtf8(typed) + ": the name of an INI file must end in .ini");
    }
    if (GetPathKind(iniPath) == EPathKind::Missing) {
        return refuse(SystemTextToUtf8(DisplayPath(iniPath)) + ": no such file");
    }
    if (const std::string why = ContinueAsSiteUser(arguments, iniPath); !why.empty()) {
        return refuse(why);
    }
    if (const std::string why = WhyNotReadable(iniPath); !why.empty()) {
        return refuse(SystemTextToUtf8(DisplayPath(iniPath)) + ": " + why);
    }
    CVisit visit(iniPath, output);
    return arguments.Has("--check")  ? visit.Check()
           : arguments.Has("--test") ? visit.Test(arguments.Get("--test"))
                                     : visit.Run();
}

} // namespace

SCommand VisitCommand() {
    return {.name = "visit",
            .summary = "Visit the relays of a site",
            .notes = kNotes,
            .options = kOptions,
            .run = RunVisit,
            .failureStatus = kRefused};
}

} // namespace ruvo
