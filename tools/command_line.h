// Parses the command line and runs the command.
#pragma once

#include "tools/text_output.h"

#include <span>
#include <string>

namespace ruvo {

/// Runs the command that the arguments (without the program's name) name, and returns the exit status. Help
/// goes to standard output; a usage error to standard error, with status 2.
int RunCommandLine(std::span<const std::string> arguments, SConsole& console);

} // namespace ruvo
