// The commands of the archive, in builds with a database.
#pragma once

#include "tools/command.h"

#include <span>

namespace ruvo {

/// Empty if tools/no_database.cpp is built instead of tools/archive.
std::span<const SCommand> DatabaseCommands();

} // namespace ruvo
