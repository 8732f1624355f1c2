// ruvoctl paths: prints where a run writes events and errors, for scripts.
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
    SOption{EOptionKind::Positional, "INI",
            "INI file; a relative path is resolved against the current folder"},
    SOption{EOptionKind::Choice, "--of", "print only this path, without a label", "events|log"},
};

constexpr std::string_view kNotes =
    R"help(Prints the event folder and the error log as a run resolves them: relative paths in the file are resolved
against the program's folder, and the registry may name another event root. Creates and writes nothing.
Exit status: 0 on success, 1 if the file cannot be read or a path cannot be resolved.

Example: the last lines of a site's error log
  tail "$(ruvoctl paths --of log site.ini)")help";

struct SPlaces {
    std::string events;
    std::string log;
};

/// Both in the system's own form; empty on failure.
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

/// For people; with --of a path is printed unchanged, for scripts.
std::string Shown(const std::string& path) {
    return EscapeControls(SystemTextToUtf8(path));
}

int RunPaths(const CArguments& arguments, SConsole& console) {
    const SPlaces places = ResolvePlaces(FullPath(arguments.Get("INI")));
    if (places.events.empty() || places.log.empty()) {
        console.error.Write("ruvoctl: cannot resolve the paths of this file; run ruvoctl check to see why\n");
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
    return {"paths", "Print the event folder and the error log of an INI file", kNotes, kOptions, RunPaths};
}

} // namespace ruvo
