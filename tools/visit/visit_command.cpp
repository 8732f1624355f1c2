// ruvoctl visit: visits one site and reports the result in its exit status.
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/standard_streams.h"
#include "platform/terminal.h"
#include "tools/command.h"
#include "tools/ini/path_limits.h"
#include "tools/ini/site_user.h"
#include "tools/sites/given_site.h"
#include "tools/text_encoding.h"
#include "tools/visit/visit.h"
#include "tools/visit/visit_event.h"
#include "tools/visit/visit_options.h"

#include <array>

namespace ruvo {

namespace {

constexpr int kRefused = static_cast<int>(EVisitStatus::Refused);

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "SITE",
            "a site of the folder for sites: /etc/ruvo/SITE.ini (Windows: %ProgramData%\\ruvo\\SITE.ini); "
            "SITE.ini means the same. Or another file: a path, as in ./SITE.ini"},
    SOption{EOptionKind::Flag, "--check", "visit no relay, only check the configuration"},
    SOption{EOptionKind::Text, "--test", "visit no relay, only test the connection to this one", "KEY"},
    kRetryOption,
    kAfterOption,
    kEventLogOption,
};

constexpr std::string_view kNotes =
    R"(Runs ruvo, the extractor beside this program, for one site, and awaits it. The extractor itself always
exits with 0 and writes problems only to the error log; this command is for schedulers. It prints the lines
that the error log has got meanwhile, and what the extractor prints; otherwise nothing.
SITE.env next to SITE.ini is the environment of the comms server: lines of NAME=value, passed on
literally. RUVO_LOCK_DIR, RUVO_STATE_DIR, RUVO_SITE, RUVO_INI_NAME and XDG_STATE_HOME are refused there,
because with them a site could be visited twice at the same time, or recorded as another one. A file that
another user may have written is refused as a whole: it must be owned by root or by the user of the visit,
and only its owner may be able to write it (on Windows: owned by the administrators, the system or the user,
and not writable to others). The visit takes place even if something is refused.
Started by root, it continues as another user, with a fresh environment, before it writes anything: as
ruvo for a site of /etc/ruvo, for another file as the owner of its event root (or of the nearest existing
parent). Only that user and root may then be able to create or write the file, its .env file and the
folders and links that lead to them; if that user is root, the same applies to the events and the log.
With --retry, relays from which no answer came (the link was not opened, the relay did not respond) are
visited again, without the others. A relay that answered, be it by refusing a password, is never visited
again: that could cost one of its attempts. A relay that a further attempt reaches counts as reached; its
lines stay in the error log.
After a visit, unless a signal ended it, the programs of /etc/ruvo/after-visit.d (Windows: after-visit.d
in the folder of this program) run as the user of the visit, in the order of their names, for at most two
minutes each. RUVO_AFTER_VISIT_DIR names another folder. A program that users other than root (Windows:
administrators and the user of the visit) can write or replace is not started. They get the digest of the
visit on standard input, and in the environment, besides that of the visit, RUVO_SITE, RUVO_INI,
RUVO_EVENT_ROOT, RUVO_LOG, RUVO_STATUS (the exit status), RUVO_RUNS (numbers of the runs), RUVO_RELAYS,
RUVO_REACHED, and as numbers of events RUVO_TAKEN, RUVO_STORED, RUVO_LOST, RUVO_SET_ASIDE and RUVO_WAITING.
If one fails, that is reported; it does not change the status.
On Windows, a visit is one entry of the source "ruvo" in the log Application: number 100 for exit status 0,
101 for status 1 and so on to 104, and 105 if the extractor crashed, with the lines that it reports. With
--event-log bad, good visits leave none. (On Linux the systemd journal has what a service prints.)
TERM, INT and HUP (on Windows, a request to close the program) are passed on to the extractor, which then
ends in good order.
Exit status: 0 good; 1 the visit wrote lines to the error log (those about the links of muted relays do
not count, see mute); 2 the site's configuration does not allow a visit, part of it was refused, or the
extractor printed something: it could not start, a line of the error log was lost, or no journal could be
created; 3 a signal ended the visit, so relays may not have been visited; 4 another visit of the site is
going on, and this one did nothing; another status is that of an extractor that crashed. With --test, it
is that of ruvoctl test.

Example: as the unit of the site does, after a change
  ruvoctl visit yard --check && ruvoctl visit yard)";

/// What was typed, as it is understood in another folder.
std::vector<std::string> FullWords(const CArguments& arguments, const std::string& iniPath) {
    std::vector<std::string> words{"visit"};
    if (arguments.Has("--check")) {
        words.emplace_back("--check");
    }
    for (const char* const name : {"--test", "--retry", "--after", "--event-log"}) {
        if (arguments.Has(name)) {
            words.push_back(name + ("=" + arguments.Get(name)));
        }
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

int VisitSite(const CArguments& arguments, CVisitOutput& output, std::string& reached) {
    const auto refuse = [&output](const std::string& why) {
        output.Complain(why);
        return kRefused;
    };
    const std::optional<SRetry> retry = ReadRetry(arguments);
    if (!retry) {
        return refuse(std::string(kRetryMistake));
    }
    const std::string typed = arguments.Get("SITE");
    const std::string iniPath = GivenSitePath(typed);
    if (iniPath.empty()) {
        return refuse(SystemTextToUtf8(typed) + ": the name of an INI file must end in .ini");
    }
    if (const std::string why = WhyNoRunOpens(iniPath); !why.empty()) {
        return refuse(SystemTextToUtf8(DisplayPath(iniPath)) + ": " + why);
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
    const int status = arguments.Has("--check")  ? visit.Check()
                       : arguments.Has("--test") ? visit.Test(arguments.Get("--test"))
                                                 : visit.Run(*retry);
    reached = visit.Reached();
    return status;
}

int RunVisit(const CArguments& arguments, SConsole& console) {
    IgnoreClosedPipes(); // the extractor is not left alone because nobody reads
    CVisitOutput output(console, IsSystemJournal(EStandardStream::Output),
                        IsSystemJournal(EStandardStream::Error));
    std::string reached;
    const int status = VisitSite(arguments, output, reached);
    const std::string wanted = arguments.Has("--event-log") ? arguments.Get("--event-log") : "all";
    const bool isVisit = !arguments.Has("--check") && !arguments.Has("--test");
    if (isVisit && (wanted == "all" || (wanted == "bad" && status != 0))) {
        const SVisitEvent event =
            EventOfVisit(status, SystemTextToUtf8(arguments.Get("SITE")), reached, output.Said());
        WriteSystemEvent(event.kind, event.number, event.text);
    }
    return status;
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
