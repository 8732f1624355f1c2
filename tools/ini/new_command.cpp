// ruvoctl new: an INI file for a site.
#include "app/load_and_check.h"
#include "config/configuration.h"
#include "paths/path_utilities.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "tools/command.h"
#include "tools/ini/diagnostics.h"
#include "tools/ini/ini_edit.h"
#include "tools/ini/password_input.h"
#include "tools/ini/site_questions.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "SITE.ini", "the file to make; its name without .ini names the site"},
    SOption{EOptionKind::Choice, "--link", "how the relays are reached", kLinkChoices},
    SOption{EOptionKind::Repeated, "--relay",
            "a relay, once for each: its device address, for Ethernet IP,device or IP,device,bus; with "
            "RV003= before it under that key",
            "ADDRESS"},
    SOption{EOptionKind::Text, "--port", "serial link: the port; without it COM1", "PORT"},
    SOption{EOptionKind::Choice, "--baud", "serial link: the speed; without it 9600", kBaudRates},
    SOption{EOptionKind::Text, "--modem", "modem link: the name of the modem", "NAME"},
    SOption{EOptionKind::Text, "--number", "modem link: the telephone number", "NUMBER"},
    SOption{EOptionKind::Text, "--events", "the folder for events, instead of the usual one", "FOLDER"},
    SOption{EOptionKind::Text, "--log", "the error log, instead of the usual one", "FILE"},
    SOption{
        EOptionKind::Flag, "--passwords",
        "asks for a password for each --relay, or reads a line of the input for each; an empty one is none"},
};

// As the help of --port and --baud says.
static_assert(GeneralKey("CommPort").defaultText == "COM1" && GeneralKey("BaudRate").defaultText == "9600");

constexpr std::string_view kNotes =
    "Asks for what the options leave open; with --link and --relay nothing is asked. The file has comments, "
    "passes\n"
    "check, and is readable by its owner alone, or also by the group ruvo in a folder of that group; on "
    "Windows the\n"
    "folder's permissions decide. A file that exists is never overwritten, and one in /etc/ruvo must have a "
    "name that\n"
    "its timer can have too. Its paths are full ones: events go to\n"
    "/var/lib/ruvo/SITE and problems to /var/log/ruvo/SITE.log where those folders exist and can be written, "
    "else to\n"
    "SITE and SITE.log beside the file.\n"
    "Exit status: 0, or 1 when no file was made (or it was, and saying so failed), or 2 for a mistake in "
    "the\n"
    "arguments.\n\n"
    "Example: asking, then without a question\n"
    "  ruvoctl new /etc/ruvo/north.ini\n"
    "  ruvoctl new /etc/ruvo/south.ini --link ethernet --relay 10.20.0.5,2,1 --relay 10.20.0.6,2";

constexpr std::string_view kNotice =
    "ruvoctl new: want SITE.ini, and --link serial, modem or ethernet with a --relay for each relay (and "
    "--modem\n"
    "for a modem) where there is no terminal to ask at; ruvoctl new --help tells the rest.\n"
    "A password is never an argument, since other users see the arguments of a program: it is asked for, or "
    "read\nfrom the standard input. Example: ruvoctl new site.ini --link serial --relay 12 --passwords\n";

constexpr std::string_view kReaders = "ruvo"; // the group that runs of a packaged installation have
constexpr std::string_view kScheduledSites = R"(C:\etc\ruvo\)";
constexpr std::string_view kUsualEvents = R"(C:\var\lib\ruvo)";
constexpr std::string_view kUsualLogs = R"(C:\var\log\ruvo)";

/// Where a new file and what it names go.
struct SPlace {
    std::string path;   ///< full
    std::string folder; ///< with its separator
    std::string site;
};

int Fail(SConsole& console, std::string_view why) {
    console.error.Write("ruvoctl: " + EscapeControls(SystemTextToUtf8(why)) + "\n");
    return kExitFailed;
}

/// A run takes a file of such a name alone from its command line.
bool HasIniExtension(const SPathParts& parts) {
    return parts.extension.size() == 4 && EqualIniNames(parts.extension, ".ini");
}

/// True for a name that a site's timer can have as it is.
bool CanBeScheduled(const std::string& site) {
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-.";
    return site.find_first_not_of(kPlain) == std::string::npos && site.front() != '-';
}

/// Why no file can be made there; empty when one can.
std::string FindPlace(const std::string& typed, SPlace& place) {
    place.path = FullPath(typed);
    const SPathParts parts = SplitPath(place.path);
    place.folder = parts.drive + parts.folder;
    place.site = parts.name;
    if (!HasIniExtension(parts) || place.site.empty()) {
        return "want a file whose name ends in .ini, since a run takes no other";
    }
    if (place.folder == kScheduledSites && !CanBeScheduled(place.site)) {
        return "want a name that the site's timer can have too: of letters A to Z, digits, \"_\", \"-\" and "
               "\".\", and without \"-\" in front";
    }
    if (GetPathKind(place.path) != EPathKind::Missing || IsLink(place.path)) {
        return AccessFailureText({EAccessFailure::Exists, 0});
    }
    return DirectoryExists(place.folder) ? std::string() : AccessFailureText({EAccessFailure::NotMade, 0});
}

/// In the usual folder of the machine, where there is one, else beside the file.
std::string UsualPath(const SPlace& place, std::string_view folder, const std::string& name) {
    const std::string usual(folder);
    return DirectoryExists(usual) && CanWriteInFolder(usual) ? usual + "\\" + name : place.folder + name;
}

/// As it is written into the file: relative ones count from the current folder here, but not in a run.
std::string ChosenPath(const CArguments& arguments, std::string_view option, const std::string& usual) {
    return SystemPath(FullPath(arguments.Has(option) ? arguments.Get(option) : usual));
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

/// Takes the options, and asks for the rest where that is wanted. False when something stays open.
bool FillSite(const CArguments& arguments, SConsole& console, bool asks, SNewSite& site) {
    const std::optional<ELink> link =
        arguments.Has("--link") ? LinkNamed(arguments.Get("--link")) : AskLink(console);
    if (!link) {
        return false;
    }
    if (HasForeignOption(arguments, *link)) {
        Fail(console, "an option that goes with another link was given");
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

/// What is wrong with a relay of the options; empty for nothing.
std::string AddRelay(const std::string& typed, bool takesPassword, ELink link, SConsole& console,
                     CIniDocument& document) {
    const std::size_t equals = typed.find('=');
    const bool hasKey = equals != std::string::npos;
    const std::string address = typed.substr(hasKey ? equals + 1 : 0);
    if (hasKey && !IsRelayKey(typed.substr(0, equals))) {
        return "--relay: want RV and three digits before \"=\", as in RV003=12";
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
    Fail(console, "no file was made, since check would refuse it: " + std::string(ResultMessage(code)));
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

/// Makes the file on trial under another name, to tell what is wrong with the places before anything is
/// typed. True when nothing is.
bool TryPlaces(const SPlace& place, const SNewSite& site, SConsole& console) {
    constexpr std::array kOfPlaces{EResultCode::EventRootInvalid, EResultCode::RegistryDestinationInvalid,
                                   EResultCode::LogFileNotWritable};
    const CIniDocument document(NewSiteText(site));
    const std::string path = place.folder + file_access::NewName(place.site + ".ini");
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

/// As it is typed at a shell.
std::string Quoted(const std::string& file) {
    return file.find_first_of(" \t") == std::string::npos ? file : "\"" + file + "\"";
}

/// Writes the file, and takes it back unless check would be content with it.
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
    console.out.Write(file + ": made, with " + std::to_string(ListRelays(document.Ini()).size()) +
                      " relays.\nNext: ruvoctl check " + Quoted(file) + ", then ruvoctl test " +
                      Quoted(file) + " KEY for one of them.\n");
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
    if (HasIniExtension(SplitPath(site.log))) {
        return Fail(console, "--log: an INI file cannot be the error log; want another name");
    }
    if (!TryPlaces(place, site, console)) {
        return kExitFailed;
    }
    if (!FillSite(arguments, console, asks, site)) {
        console.error.Write(asks ? "\nruvoctl: no file was made\n" : kNotice);
        return asks ? kExitFailed : kExitUsage;
    }
    CIniDocument document(NewSiteText(site));
    if (const std::string key = UnreadableEntry(site, document.Ini()); !key.empty()) {
        return Fail(console, key + ": want a text of " + std::to_string(kLongestText) +
                                 " characters at most, without control characters and "
                                 "without blanks or quotes around it; for a path a full one");
    }
    if (!arguments.Has("--relay")) {
        return AskRelays(console, site.link, document) ? WriteSite(place, document, typed, console)
                                                       : Fail(console, "no file was made");
    }
    const std::string why = AddRelays(arguments, site.link, console, document);
    return why.empty() ? WriteSite(place, document, typed, console) : Fail(console, why);
}

} // namespace

SCommand NewCommand() {
    return {"new", "Make an INI file for a site", kNotes, kOptions, RunNew, kNotice};
}

} // namespace ruvo
