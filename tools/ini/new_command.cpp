// ruvoctl new: creates an INI file for a site.
#include "app/load_and_check.h"
#include "config/configuration.h"
#include "config/result_messages.h"
#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/system_tools.h"
#include "tools/command.h"
#include "tools/ini/diagnostics.h"
#include "tools/ini/ini_edit.h"
#include "tools/ini/password_input.h"
#include "tools/ini/path_limits.h"
#include "tools/ini/site_questions.h"
#include "tools/text_encoding.h"
#include "tools/typed_path.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "SITE.ini", "file to create; its name without .ini is the site name"},
    SOption{EOptionKind::Choice, "--link", "link to the relays", kLinkChoices},
    SOption{EOptionKind::Repeated, "--relay",
            "add a relay (repeatable): device address, or for Ethernet IP,device or IP,device,bus; "
            "prefix RV003= to choose its key",
            "ADDRESS"},
    SOption{EOptionKind::Text, "--port", "serial link: port (default: COM1)", "PORT"},
    SOption{EOptionKind::Choice, "--baud", "serial link: baud rate (default: 9600)", kBaudRates},
    SOption{EOptionKind::Text, "--modem", "modem link: name of the modem", "NAME"},
    SOption{EOptionKind::Text, "--number", "modem link: telephone number", "NUMBER"},
    SOption{EOptionKind::Text, "--events", "event folder (default: see below)", "FOLDER"},
    SOption{EOptionKind::Text, "--log", "error log (default: see below)", "FILE"},
    SOption{
        EOptionKind::Flag, "--passwords",
        "prompt for the password of each --relay, or read one line of standard input for each; empty for none"},
};

// As the help of --port and --baud says.
static_assert(GeneralKey("CommPort").defaultText == "COM1" && GeneralKey("BaudRate").defaultText == "9600");

constexpr std::string_view kNotes =
    R"(Prompts for values that no option gives; with --link and --relay it does not prompt. The new file has
comments and passes check. Only its owner can read it; in a folder of the group ruvo, that group can too;
on Windows, the system and the administrators can. An existing file is never overwritten. A file in
/etc/ruvo needs a name that is valid for its timer.
All paths in the file are absolute. The defaults are /var/lib/ruvo/SITE for events and
/var/log/ruvo/SITE.log for the error log if those folders exist and are writable, else SITE and SITE.log
next to the file.
Exit status: 0 on success, 1 on failure, 2 on a usage error. After a failure there is no new file, unless
only the confirmation could not be written.

Example: with prompts, then without
  ruvoctl new /etc/ruvo/north.ini
  ruvoctl new /etc/ruvo/south.ini --link ethernet --relay 10.20.0.5,2,1 --relay 10.20.0.6,2)";

constexpr std::string_view kNotice =
    R"(usage: ruvoctl new SITE.ini --link serial|modem|ethernet --relay ADDRESS...
Without --link or --relay, ruvoctl prompts, for which standard input must be a terminal; a modem link needs
--modem. See ruvoctl new --help.
A password is never an argument, because other users can see the arguments of a program: ruvoctl prompts
for it, or reads it from standard input. Example: ruvoctl new site.ini --link serial --relay 12 --passwords
)";

constexpr std::string_view kReaders = "ruvo"; // the group that runs of a packaged installation have
constexpr std::string_view kScheduledSites = R"(C:\etc\ruvo\)";
constexpr std::string_view kUsualEvents = R"(C:\var\lib\ruvo)";
constexpr std::string_view kUsualLogs = R"(C:\var\log\ruvo)";

/// The location of a new file.
struct SPlace {
    std::string path;   ///< absolute
    std::string folder; ///< with its separator
    std::string site;
};

int Fail(SConsole& console, std::string_view why) {
    console.error.Write("ruvoctl: " + EscapeControls(SystemTextToUtf8(why)) + "\n");
    return kExitFailed;
}

/// A run accepts only such a name on its command line.
bool HasIniExtension(const SPathParts& parts) {
    return parts.extension.size() == 4 && EqualIniNames(parts.extension, ".ini");
}

/// True for a name that is valid in the name of a timer.
bool CanBeScheduled(const std::string& site) {
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-.";
    return site.find_first_not_of(kPlain) == std::string::npos && site.front() != '-';
}

/// Why no file can be created there; empty if one can.
std::string FindPlace(const std::string& typed, SPlace& place) {
    if (std::string why = WhyNoRunOpens(typed); !why.empty()) {
        return why;
    }
    place.path = TypedPath(typed);
    const SPathParts parts = SplitPath(place.path);
    place.folder = parts.drive + parts.folder;
    place.site = parts.name;
    if (!HasIniExtension(parts) || place.site.empty()) {
        return "expected a file name that ends in .ini; a run accepts no other";
    }
    if (place.folder == kScheduledSites && !CanBeScheduled(place.site)) {
        return "expected a name that is valid for the timer: letters A to Z, digits, \"_\", \"-\" and \".\", not starting with \"-\"";
    }
    if (GetPathKind(place.path) != EPathKind::Missing || IsLink(place.path)) {
        return AccessFailureText({EAccessFailure::Exists, 0});
    }
    return DirectoryExists(place.folder) ? std::string() : AccessFailureText({EAccessFailure::NotCreated, 0});
}

/// In the standard folder of the machine, if it exists, else next to the file.
std::string UsualPath(const SPlace& place, std::string_view folder, const std::string& name) {
    const std::string usual(folder);
    return DirectoryExists(usual) && CanWriteInFolder(usual) ? usual + "\\" + name : place.folder + name;
}

/// The path for the file: a relative one is resolved against the current folder here, but not in a run.
std::string ChosenPath(const CArguments& arguments, std::string_view option, const std::string& usual) {
    return SystemPath(FullPath(arguments.Has(option) ? arguments.Get(option) : usual));
}

/// Empty when both can be written into the file.
std::string WhyNotThesePlaces(const SNewSite& site) {
    if (HasIniExtension(SplitPath(site.log))) {
        return "--log: an INI file cannot be the error log; use another name";
    }
    if (const std::string why = WhyNoRunOpens(site.events); !why.empty()) {
        return "--events: " + why;
    }
    const std::string why = WhyNoRunOpens(site.log);
    return why.empty() ? why : "--log: " + why;
}

/// True when an option belongs to another link: it would have no effect.
bool HasForeignOption(const CArguments& arguments, ELink link) {
    for (std::size_t other = 0; other < kLinks.size(); ++other) {
        const auto questions = QuestionsOf(static_cast<ELink>(other));
        const bool isGiven = std::ranges::any_of(
            questions, [&](const SQuestion& question) { return arguments.Has(question.option); });
        if (static_cast<ELink>(other) != link && isGiven) {
            return true;
        }
    }
    return false;
}

/// Reads the options, and prompts for the rest if requested. False if something is still missing.
bool FillSite(const CArguments& arguments, SConsole& console, bool asks, SNewSite& site) {
    const std::optional<ELink> link =
        arguments.Has("--link") ? LinkNamed(arguments.Get("--link")) : AskLink(console);
    if (!link) {
        return false;
    }
    if (HasForeignOption(arguments, *link)) {
        Fail(console, "an option belongs to another link");
        return false;
    }
    site.link = *link;
    for (const SQuestion& question : QuestionsOf(*link)) {
        if (arguments.Has(question.option)) {
            site.*question.field = arguments.Get(question.option);
        } else if (!asks) {
            site.*question.field = question.usual;
        } else if (!AskQuestion(console, question, site)) {
            return false;
        }
        if (question.isNeeded && (site.*question.field).empty()) {
            return false;
        }
    }
    return true;
}

/// Adds a relay of the options. A readable reason on failure; empty on success.
std::string AddRelay(const std::string& typed, bool takesPassword, ELink link, SConsole& console,
                     CIniDocument& document) {
    const std::size_t equals = typed.find('=');
    const bool hasKey = equals != std::string::npos;
    const std::string address = typed.substr(hasKey ? equals + 1 : 0);
    if (hasKey && !IsRelayKey(typed.substr(0, equals))) {
        return "--relay: expected RV and three digits before \"=\", as in RV003=12";
    }
    const std::string key = hasKey ? UpperKey(typed.substr(0, equals)) : FreeKey(document.Ini()).value_or("");
    if (std::string why = WhyNotAdded(document.Ini(), link, key, address); !why.empty()) {
        return "--relay: " + why;
    }
    document.Set(LinkRow(link).section, key, address);
    const Mistake mistake = takesPassword ? ReadRelayPassword(console, key, document) : Mistake();
    return mistake.empty() ? std::string() : "password of " + key + ": " + std::string(mistake);
}

std::string AddRelays(const CArguments& arguments, ELink link, SConsole& console, CIniDocument& document) {
    for (const std::string& relay : arguments.GetAll("--relay")) {
        if (std::string why = AddRelay(relay, arguments.Has("--passwords"), link, console, document);
            !why.empty()) {
            return why;
        }
    }
    return {};
}

int ReportRefusal(EResultCode code, const CIniText& ini, SConsole& console) {
    Fail(console, "no file created, because check would refuse it: " + std::string(ResultMessage(code)));
    for (const SDiagnostic& diagnostic : ExplainResultCode(code, ini)) {
        Fail(console, diagnostic.text);
    }
    return kExitFailed;
}

EResultCode CheckCode(const std::string& path) {
    CRunContext context;
    const EResultCode code = LoadAndCheck(context, path, true);
    context.Config().WipePasswords();
    return code;
}

/// Creates the file under a temporary name, to report wrong paths before the user types anything. True if
/// none is wrong.
bool TryPlaces(const SPlace& place, const SNewSite& site, SConsole& console) {
    constexpr std::array kOfPlaces{EResultCode::EventRootInvalid, EResultCode::RegistryDestinationInvalid,
                                   EResultCode::LogFileNotWritable};
    const CIniDocument document(NewSiteText(site));
    const std::string path = place.folder + file_replacement::TemporaryName(place.site + ".ini");
    const SAccessResult written = WriteNewPrivateFile(path, document.Bytes(), {});
    if (!written.Good()) {
        Fail(console, AccessFailureText(written));
        return false;
    }
    const EResultCode code = CheckCode(path);
    RemoveFile(path);
    if (std::ranges::find(kOfPlaces, code) == kOfPlaces.end()) {
        return true;
    }
    ReportRefusal(code, document.Ini(), console);
    return false;
}

/// Writes the file, and removes it again if it does not pass check.
int WriteSite(const SPlace& place, const CIniDocument& document, const std::string& typed,
              SConsole& console) {
    const SAccessResult written = WriteNewPrivateFile(place.path, document.Bytes(), kReaders);
    if (!written.Good()) {
        return Fail(console, AccessFailureText(written));
    }
    if (const EResultCode code = CheckCode(place.path); code != EResultCode::Success) {
        RemoveFile(place.path);
        return ReportRefusal(code, document.Ini(), console);
    }
    const std::string file = EscapeControls(SystemTextToUtf8(typed));
    console.out.Write(file + ": created with " + std::to_string(ListRelays(document.Ini()).size()) +
                      " relays.\nNext: run ruvoctl check " + ShellWord(file) + ", then ruvoctl test " +
                      ShellWord(file) + " KEY for one of the relays.\n");
    return kExitGood;
}

int RunNew(const CArguments& arguments, SConsole& console) {
    const bool asks = !arguments.Has("--link") || !arguments.Has("--relay");
    if (asks && !console.inIsTerminal) {
        console.error.Write(kNotice);
        return kExitUsage;
    }
    const std::string typed = arguments.Get("SITE.ini");
    SPlace place;
    if (const std::string why = FindPlace(typed, place); !why.empty()) {
        return Fail(console, why);
    }
    SNewSite site;
    site.name = place.site;
    site.events = ChosenPath(arguments, "--events", UsualPath(place, kUsualEvents, place.site));
    site.log = ChosenPath(arguments, "--log", UsualPath(place, kUsualLogs, place.site + ".log"));
    if (const std::string why = WhyNotThesePlaces(site); !why.empty()) {
        return Fail(console, why);
    }
    if (!TryPlaces(place, *AsStored(site), console)) {
        return kExitFailed;
    }
    if (!FillSite(arguments, console, asks, site)) {
        console.error.Write(asks ? "\nruvoctl: no file created\n" : kNotice);
        return asks ? kExitFailed : kExitUsage;
    }
    const auto stored = AsStored(std::move(site));
    if (!stored) {
        return Fail(console, "expected only characters of this system's code page");
    }
    CIniDocument document(NewSiteText(*stored));
    if (const std::string key = UnreadableEntry(*stored, document.Ini()); !key.empty()) {
        return Fail(console, key + ": expected at most " + std::to_string(kLongestText) +
                                 " characters, without control characters and without surrounding "
                                 "blanks or quotes; a path must be absolute");
    }
    if (!arguments.Has("--relay")) {
        return AskRelays(console, stored->link, document) ? WriteSite(place, document, typed, console)
                                                          : Fail(console, "no file created");
    }
    const std::string why = AddRelays(arguments, stored->link, console, document);
    return why.empty() ? WriteSite(place, document, typed, console) : Fail(console, why);
}

} // namespace

SCommand NewCommand() {
    return {"new", "Create an INI file for a site", kNotes, kOptions, RunNew, kNotice};
}

} // namespace ruvo
