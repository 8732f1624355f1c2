#include "tools/database_commands.h"

#include <array>

namespace ruvo {

SCommand ArchiveCommand();
SCommand FindCommand();

std::span<const SCommand> DatabaseCommands() {
    static const std::array commands{ArchiveCommand(), FindCommand()};
    return commands;
}

} // namespace ruvo
