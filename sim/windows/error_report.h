// What the program has to say when it cannot do what it was asked.
#pragma once

#include <string>

namespace ruvo::sim {

/// One line on standard error and on the debugger output. A program without a window has no standard error of
/// its own when it is started from a console: then the line goes to that console.
void ReportError(const std::string& line) noexcept;

} // namespace ruvo::sim
