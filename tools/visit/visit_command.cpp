// ruvoctl visit: visits one site and reports the result in its exit status.
#include "base/text.h"
#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/ini_text.h"
#include "platform/sites_folder.h"
#include "platform/standard_streams.h"
#include "platform/terminal.h"
#include "tools/command.h"
#include "tools/given_time.h"
#include "tools/ini/site_user.h"
#include "tools/text_encoding.h"
#include "tools/visit/visit.h"

#include <algorithm>
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
    SOption{EOptionKind::Text, "--retry",
            "visit relays from which no answer came up to N times again (default: 0; at most 9)", "N"},
    SOption{EOptionKind::Text, "--after",
            "pause before each further attempt, such as 90s or 1h (default: 10m)", "LENGTH"},
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
With --retry, relays from which no answer came (the link was not opened, the relay did not respond) are
visited again, without the others. A relay that answered, be it by refusing a password, is never visited
again: that could cost one of its attempts. A relay that a further attempt reaches counts as reached; its
lines stay in the error log.
After a visit, unless a signal ended it, the programs of /etc/ruvo/after-visit.d (Windows: after-visit.d
in the folder of this program) run as the user of the visit, in the order of their names, for at most two
minutes each. RUVO_AFTER_VISIT_DIR names another folder. A program that users other than root can write or
replace is not started. They get the digest of the visit on standard input, and in the environment, besides
that of the visit, RUVO_SITE, RUVO_INI, RUVO_EVENT_ROOT, RUVO_LOG, RUVO_STATUS (the exit status), RUVO_RUNS
(numbers of the runs), RUVO_RELAYS, RUVO_REACHED, and as numbers of events RUVO_TAKEN, RUVO_STORED,
RUVO_LOST, RUVO_SET_ASIDE and RUVO_WAITING. If one fails, that is reported; it does not change the status.
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
    for (const char* const name : {"--test", "--retry", "--after"}) {
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

/// A pause may also be of seconds.
std::optional<std::int64_t> ParsePause(const std::string& text) {
    constexpr std::size_t kLongest = 6;
    const bool isSeconds = text.size() > 1 && text.size() <= kLongest && text.ends_with('s') &&
                           std::all_of(text.begin(), text.end() - 1, IsDigit);
    return isSeconds ? std::optional<std::int64_t>(std::stoi(text)) : ParseLength(text);
}

std::optional<SRetry> ReadRetry(const CArguments& arguments) {
    SRetry retry;
    if (const std::string number = arguments.Get("--retry"); arguments.Has("--retry")) {
        if (number.size() != 1 || !IsDigit(number.front())) {
            return std::nullopt;
        }
        retry.most = static_cast<unsigned>(number.front() - '0');
    }
    if (arguments.Has("--after")) {
        const auto length = ParsePause(arguments.Get("--after"));
        if (!length) {
            return std::nullopt;
        }
        retry.after = std::chrono::seconds(*length);
    }
    return retry;
}

int RunVisit(const CArguments& arguments, SConsole& console) {
    IgnoreClosedPipes(); // the extractor is not left alone because nobody reads
    CVisitOutput output(console, IsSystemJournal(EStandardStream::Output),
                        IsSystemJournal(EStandardStream::Error));
    const auto refuse = [&output](const std::string& why) {
        output.Complain(why);
        return kRefused;
    };
    const std::optional<SRetry> retry = ReadRetry(arguments);
    if (!retry) {
        return refuse(
            "expected a number from 0 to 9 for --retry, and a length such as 90s or 10m for --after");
    }
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
                                     : visit.Run(*retry);
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
