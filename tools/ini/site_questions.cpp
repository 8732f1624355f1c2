#include "tools/ini/site_questions.h"

#include "base/text.h"
#include "config/configuration.h"
#include "tools/ini/password_input.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr SQuestion kSerialQuestions[] = {
    {"--port", &SNewSite::port, "Serial port", GeneralKey("CommPort").defaultText},
    {"--baud", &SNewSite::baud, "Baud rate", GeneralKey("BaudRate").defaultText, kBaudRates},
};
constexpr SQuestion kModemQuestions[] = {
    {"--modem", &SNewSite::modem, "Name of the modem", "", {}, true},
    {"--number", &SNewSite::number, "Telephone number", ""},
};

/// Reads a line with echo, without surrounding blanks. None at the end of input.
std::optional<std::string> AskLine(SConsole& console, const std::string& prompt) {
    console.error.Write(prompt);
    console.error.Flush();
    std::string line;
    if (!std::getline(console.in, line)) {
        return std::nullopt;
    }
    return std::string(Trim(line, kWhiteSpace));
}

void PrintHint(SConsole& console, std::string_view text) {
    console.error.Write("  " + std::string(text) + "\n");
}

bool IsOneOf(std::string_view text, std::string_view choices) {
    while (!choices.empty()) {
        const std::size_t end = std::min(choices.find('|'), choices.size());
        if (text == choices.substr(0, end)) {
            return true;
        }
        choices.remove_prefix(std::min(end + 1, choices.size()));
    }
    return false;
}

/// Reports a mistake and asks again.
bool AskPassword(SConsole& console, const std::string& key, CIniDocument& document) {
    std::string_view mistake = kNoInput;
    do {
        mistake = ReadRelayPassword(console, key, document);
        if (mistake == kNoInput) {
            return false;
        }
        if (!mistake.empty()) {
            PrintHint(console, mistake);
        }
    } while (!mistake.empty());
    return true;
}

} // namespace

std::span<const SQuestion> QuestionsOf(ELink link) {
    static constexpr std::array<std::span<const SQuestion>, kLinks.size()> kQuestions{
        kSerialQuestions, kModemQuestions, std::span<const SQuestion>()};
    return kQuestions[static_cast<std::size_t>(link)];
}

std::optional<ELink> AskLink(SConsole& console) {
    while (const auto answer =
               AskLine(console, "Link to the relays (serial, modem or ethernet) [serial]: ")) {
        if (const auto link = LinkNamed(answer->empty() ? "serial" : *answer)) {
            return link;
        }
        PrintHint(console, "expected serial, modem or ethernet");
    }
    return std::nullopt;
}

bool AskQuestion(SConsole& console, const SQuestion& question, SNewSite& site) {
    const std::string usual = question.usual.empty() ? "" : " [" + std::string(question.usual) + "]";
    while (auto answer = AskLine(console, std::string(question.prompt) + usual + ": ")) {
        if (answer->empty()) {
            answer = question.usual;
        }
        const bool isChoice = question.choices.empty() || IsOneOf(*answer, question.choices);
        if (isChoice && !(question.isNeeded && answer->empty())) {
            site.*question.field = *answer;
            return true;
        }
        PrintHint(console,
                  isChoice ? "an answer is required" : "expected one of " + std::string(question.choices));
    }
    return false;
}

bool AskRelays(SConsole& console, ELink link, CIniDocument& document) {
    PrintHint(console, link == ELink::Ethernet
                           ? "Enter the relays as IP,device or IP,device,bus; finish with an empty line."
                           : "Enter the device address of each relay; finish with an empty line.");
    bool hasRelays = false;
    while (const auto key = FreeKey(document.Ini())) {
        const auto address = AskLine(console, "Relay " + *key + ": ");
        if (!address || (address->empty() && hasRelays)) {
            return address.has_value();
        }
        const std::string why = address->empty() ? "at least one relay is required"
                                                 : WhyNotAdded(document.Ini(), link, *key, *address);
        if (!why.empty()) {
            PrintHint(console, why);
            continue;
        }
        document.Set(LinkRow(link).section, *key, *address);
        hasRelays = true;
        if (!AskPassword(console, *key, document)) {
            return false;
        }
    }
    return true;
}

std::string_view ReadRelayPassword(SConsole& console, const std::string& key, CIniDocument& document) {
    std::string scrambled;
    const Mistake mistake = ReadScrambled(
        console, "Password of " + key + " (empty for none): ", EPasswordBytes::Ascii, scrambled);
    if (mistake.empty() && !IsEmptyPassword(scrambled)) {
        document.Set(kPasswordsSection, key, scrambled);
    }
    return mistake;
}

} // namespace ruvo
