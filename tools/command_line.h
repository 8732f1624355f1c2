// From the words of the command line to the command that they name.
#pragma once

#include "tools/text_output.h"

#include <span>
#include <string>

namespace ruvo {

/// Runs the command that the arguments (without the program's name) name; the exit status. Help goes to the
/// output, a mistake in the arguments to the error output, with status 2.
int RunCommandLine(std::span<const std::string> arguments, SConsole& console);

} // namespace ruvo
