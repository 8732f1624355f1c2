// ruvoctl help: the same text as the option --help.
#include "tools/command.h"
#include "tools/command_line.h"

#include <array>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Optional, "COMMAND", "the command to describe (default: list the commands)"}};

constexpr std::string_view kNotes = R"(Prints the same text as ruvoctl COMMAND --help.
Exit status: 0, or 2 on a usage error.

Example:
  ruvoctl help password)";

int RunHelp(const CArguments& arguments, SConsole& console) {
    std::vector<std::string> words{"--help"};
    if (arguments.Has("COMMAND")) {
        words.insert(words.begin(), arguments.Get("COMMAND"));
    }
    return RunCommandLine(words, console);
}

} // namespace

SCommand HelpCommand() {
    return {"help", "List the commands, or describe one", kNotes, kOptions, RunHelp};
}

} // namespace ruvo
