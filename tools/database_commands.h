// The commands around the archive, where the build has a database for them.
#pragma once

#include "tools/command.h"

#include <span>

namespace ruvo {

/// None where tools/no_database.cpp is built in the place of tools/archive.
std::span<const SCommand> DatabaseCommands();

} // namespace ruvo
