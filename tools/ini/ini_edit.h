// Editing an INI file in place: entry by entry, the rest untouched, the file replaced as a whole.
#pragma once

#include "platform/file_replacement.h"
#include "platform/ini_text.h"
#include "tools/command.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// One entry that gets a value, or goes when there is none.
struct SIniEdit {
    std::string section;
    std::string key;
    std::optional<std::string> value;
};

/// What a command changes in a file.
struct SIniPlan {
    std::vector<SIniEdit> edits = {}; ///< may be none
    std::string done = {};            ///< what is said once it is done
    std::string refusal = {};         ///< why nothing is changed; never contains what was typed
};
using MakeIniPlan = std::function<SIniPlan(const CIniText& ini)>;

/// Reads the file, asks for the plan, and replaces the file by one that differs only in the plan's edits.
/// Refuses what would make a file that passes the rules fail them, and a file that another process changed
/// meanwhile. Says the outcome, and returns the exit status.
int EditIniFile(const std::string& typedPath, SConsole& console, const MakeIniPlan& makePlan);

/// What to do about a failure, for people.
std::string AccessFailureText(const SAccessResult& result);

} // namespace ruvo
