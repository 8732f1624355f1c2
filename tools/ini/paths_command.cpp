// ruvoctl paths: where a run of an INI file puts events and problems, for scripts that look after it.
#include "app/program_folder.h"
#include "config/configuration.h"
#include "config/destination_root.h"
#include "log/error_log.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "tools/command.h"
#include "tools/text_encoding.h"

#include <array>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "INI", "the INI file; a relative path counts from the current folder"},
    SOption{EOptionKind::Choice, "--of", "this path alone, without its name before it", "events|log"},
};

constexpr std::string_view kNotes =
    "Prints the folder of the events and the error log, as a run resolves them: relative paths in the file "
    "count\n"
    "from the program's folder, and the registry may name another root. Nothing is made or written.\n"
    "Exit status: 0, or 1 when the file cannot be read or a path cannot be formed.\n\n"
    "Example: the last lines of a site's error log\n"
    "  tail \"$(ruvoctl paths --of log site.ini)\"";

struct SPlaces {
    std::string events;
    std::string log;
};

/// Both as the system writes paths; empty where there is none.
SPlaces ResolvePlaces(const std::string& fullPath) {
    const CProgramFolder inProgramFolder;
    CRunContext context;
    if (fullPath.empty() || !LoadConfiguration(fullPath, context.Config())) {
        return {};
    }
    context.Config().WipePasswords();
    ResolveDestinationRoot(context, true);
    ResolveErrorLogPath(context, true);
    std::string events = context.DestinationRoot(); // the registry's ends with a separator
    StripTrailingSeparators(events);
    return {SystemPath(events), SystemPath(ErrorLogPath())};
}

/// For people; alone a path goes to a script as it is.
std::string Shown(const std::string& path) {
    return EscapeControls(SystemTextToUtf8(path));
}

int RunPaths(const CArguments& arguments, SConsole& console) {
    const SPlaces places = ResolvePlaces(FullPath(arguments.Get("INI")));
    if (places.events.empty() || places.log.empty()) {
        console.error.Write("ruvoctl: no paths from this file; ruvoctl check tells what is wrong with it\n");
        return kExitFailed;
    }
    const std::string wanted = arguments.Get("--of");
    if (wanted.empty()) {
        console.out.Write("events: " + Shown(places.events) + "\nlog: " + Shown(places.log) + "\n");
    } else {
        console.out.Write((wanted == "log" ? places.log : places.events) + "\n");
    }
    return kExitGood;
}

} // namespace

SCommand PathsCommand() {
    return {"paths", "Print where an INI file puts events and problems", kNotes, kOptions, RunPaths};
}

} // namespace ruvo
