// ruvoctl paths: prints where a run writes events and errors, for scripts.
#include "platform/full_path.h"
#include "tools/command.h"
#include "tools/ini/site_places.h"
#include "tools/text_encoding.h"
#include "tools/typed_path.h"

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

/// For people; with --of a path is printed unchanged, for scripts.
std::string Shown(const std::string& path) {
    return EscapeControls(SystemTextToUtf8(path));
}

int RunPaths(const CArguments& arguments, SConsole& console) {
    const auto places = ReadSitePlaces(TypedPath(arguments.Get("INI")));
    const std::string events = places ? SystemPath(places->events) : std::string();
    const std::string log = places ? SystemPath(places->log) : std::string();
    if (events.empty() || log.empty()) {
        console.error.Write("ruvoctl: cannot resolve the paths of this file; run ruvoctl check to see why\n");
        return kExitFailed;
    }
    const std::string wanted = arguments.Get("--of");
    if (wanted.empty()) {
        console.out.Write("events: " + Shown(events) + "\nlog: " + Shown(log) + "\n");
    } else {
        console.out.Write((wanted == "log" ? log : events) + "\n");
    }
    return kExitGood;
}

} // namespace

SCommand PathsCommand() {
    return {"paths", "Print the event folder and the error log of an INI file", kNotes, kOptions, RunPaths};
}

} // namespace ruvo
