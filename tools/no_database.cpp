#include "tools/database_commands.h"

namespace ruvo {

std::span<const SCommand> DatabaseCommands() {
    return {};
}

} // namespace ruvo
