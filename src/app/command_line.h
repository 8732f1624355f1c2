// The command line: an INI file, and the switch for check-only mode.
#pragma once

#include <span>
#include <string>

namespace ruvo {

inline constexpr const char* kDefaultIniPath = "RUVO.ini";

struct SCommandLine {
    std::string iniPath = kDefaultIniPath; ///< as typed, without white space around it
    bool checkOnly = false;
};

/// Parses the arguments after the program's name. An argument whose extension begins with "ini" is the INI
/// file (the last one counts); one that begins with "-t" or "/t" selects check-only mode; all others are
/// ignored.
SCommandLine ParseCommandLine(std::span<const std::string> arguments);

} // namespace ruvo
