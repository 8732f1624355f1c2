// What ruvoctl new asks a person at a terminal.
#pragma once

#include "tools/ini/ini_document.h"
#include "tools/ini/site_text.h"
#include "tools/text_output.h"

#include <optional>
#include <string>
#include <string_view>

namespace ruvo {

/// One question about the site; it is asked again until the answer will do.
struct SQuestion {
    std::string_view option; ///< that answers it on the command line
    std::string SNewSite::*field;
    std::string_view prompt;
    std::string_view usual;        ///< the answer of an empty line
    std::string_view choices = {}; ///< separated by "|"
    bool isNeeded = false;         ///< an empty answer will not do
};
std::span<const SQuestion> QuestionsOf(ELink link);

/// None when the input ends.
std::optional<ELink> AskLink(SConsole& console);
/// False when the input ends.
bool AskQuestion(SConsole& console, const SQuestion& question, SNewSite& site);
/// Asks for relays, each with its password, until an empty line; there is one at least. False when the input
/// ends.
bool AskRelays(SConsole& console, ELink link, CIniDocument& document);

/// Asks for one relay's password, or takes a line of the input; an empty one is none. What is wrong.
std::string_view ReadRelayPassword(SConsole& console, const std::string& key, CIniDocument& document);

} // namespace ruvo
