// ruvoctl add and remove: one relay of an INI file, in place.
#include "config/configuration.h"
#include "tools/command.h"
#include "tools/ini/ini_edit.h"
#include "tools/ini/password_input.h"
#include "tools/ini/relay_entries.h"

#include <array>

namespace ruvo {

namespace {

constexpr std::string_view kIniHelp = "the INI file; a relative path counts from the current folder";
constexpr std::string_view kLinkHelp = "the section of that link, instead of the link that the file selects";

constexpr std::array kAddOptions{
    SOption{EOptionKind::Positional, "INI", kIniHelp},
    SOption{EOptionKind::Positional, "ADDRESS",
            "the device address, 1 to 254; for Ethernet IP,device or IP,device,bus as in 10.20.0.5,2,1"},
    SOption{EOptionKind::Text, "--key", "the relay's key, as RV003; without it the one behind the last key",
            "KEY"},
    SOption{EOptionKind::Choice, "--link", kLinkHelp, kLinkChoices},
    SOption{EOptionKind::Flag, "--password", "asks for the relay's password, or reads a line of the input"},
};
constexpr std::array kRemoveOptions{
    SOption{EOptionKind::Positional, "INI", kIniHelp},
    SOption{EOptionKind::Positional, "KEY", "the relay's key, as RV003, in any letter case"},
    SOption{EOptionKind::Choice, "--link", kLinkHelp, kLinkChoices},
};

constexpr std::string_view kAddNotes =
    "Adds one line and leaves every other byte of the file as it is. Refused is what check would refuse (an\n"
    "address that is none, a key that is taken), and an address that another relay has.\n"
    "The file is exchanged as a whole, with the same owner and permissions; what goes wrong leaves it as it "
    "was.\n"
    "Exit status: 0, or 1 when nothing was done (or it was, and saying so failed), or 2 for a mistake in "
    "the\n"
    "arguments.\n\n"
    "Example: a relay behind the serial port, then one at an IP address, with its password\n"
    "  ruvoctl add site.ini 12\n"
    "  ruvoctl add site.ini 10.20.0.5,2,1 --key RV010 --password";
constexpr std::string_view kRemoveNotes =
    "Takes the relay's line out, and its password unless another section lists that key too. Every other "
    "byte\n"
    "stays. The last relay cannot be removed: a run needs one.\n"
    "Exit status: 0, or 1 when nothing was done (or it was, and saying so failed), or 2 for a mistake in "
    "the\n"
    "arguments.\n\n"
    "Example:\n"
    "  ruvoctl remove site.ini RV003";

constexpr std::string_view kAddNotice =
    "ruvoctl add: want INI ADDRESS and, if at all, --key with RV and three digits, --link serial, modem or\n"
    "ethernet, and --password. A password is never an argument, since other users see the arguments of a\n"
    "program: it is asked for, or read from the standard input. Example: ruvoctl add site.ini 12 "
    "--password\n";
constexpr std::string_view kNoLink =
    "UseEthernet and UseModem in [RUVO_GENERAL] select no link; want 0 or 1 there (see ruvoctl check), or "
    "--link";

std::optional<ELink> ChosenLink(const CArguments& arguments, const CIniText& ini) {
    return arguments.Has("--link") ? LinkNamed(arguments.Get("--link")) : SelectedLink(ini);
}

SIniPlan Refusal(std::string why) {
    return {.refusal = std::move(why)};
}

SIniPlan PlanAdd(const CArguments& arguments, const CIniText& ini, SConsole& console) {
    const std::optional<ELink> link = ChosenLink(arguments, ini);
    if (!link) {
        return Refusal(std::string(kNoLink));
    }
    const std::string section(LinkRow(*link).section);
    const std::string address = arguments.Get("ADDRESS");
    const std::string key =
        arguments.Has("--key") ? UpperKey(arguments.Get("--key")) : FreeKey(ini).value_or("");
    if (std::string why = WhyNotAdded(ini, *link, key, address); !why.empty()) {
        return Refusal(std::move(why));
    }
    SIniPlan plan{.edits = {{section, key, address}}, .done = key + " added to " + Bracketed(section)};
    if (arguments.Has("--password")) {
        std::string scrambled;
        const Mistake mistake =
            ReadScrambled(console, "Password of " + key + ": ", EPasswordBytes::Ascii, scrambled);
        if (!mistake.empty()) {
            return Refusal(std::string(mistake));
        }
        if (IsEmptyPassword(scrambled)) {
            return Refusal(std::string(kNoInput) + "; without --password the relay gets none");
        }
        plan.edits.push_back({std::string(kPasswordsSection), key, scrambled});
    } else if (PasswordOf(ini, key) != EStoredPassword::None) {
        plan.done += "; it has the password that was stored under this key before";
    }
    return plan;
}

SIniPlan PlanRemove(const CArguments& arguments, const CIniText& ini) {
    const std::optional<ELink> link = ChosenLink(arguments, ini);
    if (!link) {
        return Refusal(std::string(kNoLink));
    }
    const std::string section(LinkRow(*link).section);
    const std::string key = UpperKey(arguments.Get("KEY"));
    if (ini.FindEntry(section, key) == nullptr) {
        return Refusal("no such key in " + Bracketed(section) + "; ruvoctl list shows the relays");
    }
    bool isLast = SelectedLink(ini) == link && HasValue(ini.FindEntry(section, key)); // else it is no relay
    bool isElsewhere = false;
    for (const SRelay& relay : ListRelays(ini)) {
        isLast = isLast && (relay.link != *link || relay.key == key);
        isElsewhere = isElsewhere || (relay.link != *link && relay.key == key);
    }
    if (isLast) {
        return Refusal(key + " is the last relay of " + Bracketed(section) +
                       ", and a run needs one; add another one first");
    }
    SIniPlan plan{.edits = {{section, key, std::nullopt}},
                  .done = key + " removed from " + Bracketed(section)};
    if (!isElsewhere && ini.FindEntry(kPasswordsSection, key) != nullptr) {
        plan.edits.push_back({std::string(kPasswordsSection), key, std::nullopt});
        plan.done += ", and its password";
    }
    return plan;
}

int RunAdd(const CArguments& arguments, SConsole& console) {
    if (arguments.Has("--key") && !IsRelayKey(arguments.Get("--key"))) {
        console.error.Write(kAddNotice);
        return kExitUsage;
    }
    return EditIniFile(arguments.Get("INI"), console,
                       [&](const CIniText& ini) { return PlanAdd(arguments, ini, console); });
}

int RunRemove(const CArguments& arguments, SConsole& console) {
    if (!IsRelayKey(arguments.Get("KEY"))) {
        console.error.Write(
            "ruvoctl remove: want a key of RV and three digits, as in ruvoctl remove site.ini "
            "RV003\n");
        return kExitUsage;
    }
    return EditIniFile(arguments.Get("INI"), console,
                       [&](const CIniText& ini) { return PlanRemove(arguments, ini); });
}

} // namespace

SCommand AddCommand() {
    return {"add", "Add a relay to an INI file", kAddNotes, kAddOptions, RunAdd, kAddNotice};
}

SCommand RemoveCommand() {
    return {"remove", "Remove a relay from an INI file", kRemoveNotes, kRemoveOptions, RunRemove};
}

} // namespace ruvo
