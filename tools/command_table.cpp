// The table of commands. A new one is a file of its own and a line here.
#include "tools/command.h"

#include <algorithm>
#include <array>

namespace ruvo {

SCommand EventsCommand();
SCommand SoeCommand();
SCommand NewCommand();
SCommand ListCommand();
SCommand RelaysCommand();
SCommand AddCommand();
SCommand RemoveCommand();
SCommand StatusCommand();
SCommand VisitCommand();
SCommand ScheduleCommand();
SCommand DigestCommand();
SCommand CheckCommand();
SCommand PathsCommand();
SCommand TestCommand();
SCommand PasswordCommand();
SCommand ReportCommand();
SCommand RecoverCommand();
SCommand ExplainCommand();
SCommand RecordingCommand();
SCommand MuteCommand();
SCommand UnmuteCommand();
SCommand ArchiveCommand();
SCommand FindCommand();
SCommand HelpCommand();

std::span<const SCommand> Commands() {
    static const std::array commands{
        EventsCommand(),    SoeCommand(),     VisitCommand(),   ScheduleCommand(), StatusCommand(),
        DigestCommand(),    ReportCommand(),  NewCommand(),     ListCommand(),     RelaysCommand(),
        AddCommand(),       RemoveCommand(),  CheckCommand(),   PathsCommand(),    TestCommand(),
        PasswordCommand(),  RecoverCommand(), ExplainCommand(), MuteCommand(),     UnmuteCommand(),
        RecordingCommand(), ArchiveCommand(), FindCommand(),    HelpCommand(),
    };
    return commands;
}

const SCommand* FindCommand(std::string_view name) {
    const auto found = std::ranges::find(Commands(), name, &SCommand::name);
    return found == Commands().end() ? nullptr : &*found;
}

const SCommand* FindNamedCommand(std::span<const std::string> arguments) {
    const auto word =
        std::ranges::find_if(arguments, [](const std::string& text) { return !text.starts_with('-'); });
    return word == arguments.end() ? nullptr : FindCommand(*word);
}

} // namespace ruvo
