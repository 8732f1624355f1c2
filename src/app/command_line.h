// The command line: an INI file, and the switch for check-only mode.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace ruvo {

inline constexpr const char* kDefaultIniPath = "RUVO.ini";

struct SCommandLine {
    std::string iniPath = kDefaultIniPath; ///< as typed, without white space around it
    bool checkOnly = false;
    std::vector<std::string> withoutEffect; ///< the others, likewise
};

/// Parses the arguments after the program's name. An argument whose extension begins with "ini" is the INI
/// file (the last one counts); one that begins with "-t" or "/t" selects check-only mode; all others have
/// no effect.
SCommandLine ParseCommandLine(std::span<const std::string> arguments);

} // namespace ruvo
