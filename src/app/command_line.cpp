#include "app/command_line.h"

#include "base/text.h"

#include <algorithm>
#include <string_view>

namespace ruvo {

namespace {

/// The three characters after the last "." are "ini" in any letter case; what follows them does not matter.
bool NamesIniFile(std::string_view argument) {
    const std::size_t dot = argument.rfind('.');
    if (dot == std::string_view::npos) {
        return false;
    }
    return std::ranges::equal(argument.substr(dot + 1, 3), std::string_view("ini"), {},
                              [](char typed) { return ToLower(typed); });
}

bool SelectsCheckOnly(std::string_view argument) {
    return argument.starts_with("-t") || argument.starts_with("/t");
}

} // namespace

SCommandLine ParseCommandLine(std::span<const std::string> arguments) {
    SCommandLine commandLine;
    for (const std::string& typed : arguments) {
        const std::string_view argument = Trim(typed, kWhiteSpace);
        if (NamesIniFile(argument)) {
            commandLine.iniPath = argument;
        } else if (SelectsCheckOnly(argument)) {
            commandLine.checkOnly = true;
        } else if (!argument.empty()) {
            commandLine.withoutEffect.emplace_back(argument);
        }
    }
    return commandLine;
}

} // namespace ruvo
