// The prompts of ruvoctl new.
#pragma once

#include "tools/ini/ini_document.h"
#include "tools/ini/site_text.h"
#include "tools/text_output.h"

#include <optional>
#include <string>
#include <string_view>

namespace ruvo {

/// One question about the site, repeated until the answer is valid.
struct SQuestion {
    std::string_view option; ///< of the command line, with the same meaning
    std::string SNewSite::*field;
    std::string_view prompt;
    std::string_view usual;        ///< default, for an empty line
    std::string_view choices = {}; ///< separated by "|"
    bool isNeeded = false;         ///< an empty answer is invalid
};
std::span<const SQuestion> QuestionsOf(ELink link);

/// None at the end of input.
std::optional<ELink> AskLink(SConsole& console);
/// False at the end of input.
bool AskQuestion(SConsole& console, const SQuestion& question, SNewSite& site);
/// Asks for relays, each with its password, until an empty line; at least one. False at the end of input.
bool AskRelays(SConsole& console, ELink link, CIniDocument& document);

/// Prompts for one relay's password, or reads a line of input; an empty one means none. Returns the mistake.
std::string_view ReadRelayPassword(SConsole& console, const std::string& key, CIniDocument& document);

} // namespace ruvo
