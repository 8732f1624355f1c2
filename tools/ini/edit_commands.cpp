// ruvoctl add and remove: add or remove one relay in an INI file.
#include "config/configuration.h"
#include "tools/command.h"
#include "tools/ini/ini_edit.h"
#include "tools/ini/password_input.h"
#include "tools/ini/relay_entries.h"

#include <array>

namespace ruvo {

namespace {

constexpr std::string_view kIniHelp = "INI file; a relative path is resolved against the current folder";
constexpr std::string_view kLinkHelp =
    "use the section of this link instead of the link that the file selects";

constexpr std::array kAddOptions{
    SOption{EOptionKind::Positional, "INI", kIniHelp},
    SOption{
        EOptionKind::Positional, "ADDRESS",
        "device address from 1 to 254; for Ethernet IP,device or IP,device,bus, for example 10.20.0.5,2,1"},
    SOption{EOptionKind::Text, "--key",
            "key of the relay, for example RV003 (default: the key after the last one)", "KEY"},
    SOption{EOptionKind::Choice, "--link", kLinkHelp, kLinkChoices},
    SOption{EOptionKind::Flag, "--password",
            "prompt for the relay's password, or read it from standard input if that is not a terminal"},
};
constexpr std::array kRemoveOptions{
    SOption{EOptionKind::Positional, "INI", kIniHelp},
    SOption{EOptionKind::Positional, "KEY", "key of the relay, for example RV003; case does not matter"},
    SOption{EOptionKind::Choice, "--link", kLinkHelp, kLinkChoices},
};

constexpr std::string_view kAddNotes =
    R"(Adds one line; every other byte of the file stays as it is. Refuses an entry that check would refuse (an
invalid address, a key in use) and an address that another relay has.
Replaces the file atomically, with the same owner and permissions; on failure it is unchanged.
Exit status: 0 on success, 1 on failure, 2 on a usage error. After a failure the file is unchanged, unless
only the confirmation could not be written.

Example: a relay on the serial port, then one at an IP address, with its password
  ruvoctl add site.ini 12
  ruvoctl add site.ini 10.20.0.5,2,1 --key RV010 --password)";
constexpr std::string_view kRemoveNotes =
    R"(Removes the relay's line, and its password unless another section lists the same key. Every other byte of
the file stays as it is. The last relay cannot be removed, because a run needs at least one.
Exit status: 0 on success, 1 on failure, 2 on a usage error. After a failure the file is unchanged, unless
only the confirmation could not be written.

Example:
  ruvoctl remove site.ini RV003)";

constexpr std::string_view kAddNotice =
    R"(usage: ruvoctl add INI ADDRESS [--key RVnnn] [--link serial|modem|ethernet] [--password]
A password is never an argument, because other users can see the arguments of a program: ruvoctl prompts
for it, or reads it from standard input. Example: ruvoctl add site.ini 12 --password
)";
constexpr std::string_view kNoLink =
    R"(UseEthernet and UseModem in [RUVO_GENERAL] select no link; set both to 0 or 1 (see ruvoctl check), or use --link)";

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
            return Refusal(std::string(kNoInput) + "; omit --password for a relay without a password");
        }
        plan.edits.push_back({std::string(kPasswordsSection), key, scrambled});
    } else if (PasswordOf(ini, key) != EStoredPassword::None) {
        plan.done += "; the password already stored under this key applies to it";
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
        return Refusal("no such key in " + Bracketed(section) + "; run ruvoctl list to see the relays");
    }
    bool isLast =
        SelectedLink(ini) == link && HasValue(ini.FindEntry(section, key)); // else it is not a relay
    bool isElsewhere = false;
    for (const SRelay& relay : ListRelays(ini)) {
        isLast = isLast && (relay.link != *link || relay.key == key);
        isElsewhere = isElsewhere || (relay.link != *link && relay.key == key);
    }
    if (isLast) {
        return Refusal(key + " is the last relay of " + Bracketed(section) +
                       ", and a run needs at least one; add another one first");
    }
    SIniPlan plan{.edits = {{section, key, std::nullopt}},
                  .done = key + " removed from " + Bracketed(section)};
    if (!isElsewhere && ini.FindEntry(kPasswordsSection, key) != nullptr) {
        plan.edits.push_back({std::string(kPasswordsSection), key, std::nullopt});
        plan.done += "; its password was removed too";
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
            "ruvoctl remove: expected a key of RV and three digits, as in \"ruvoctl remove site.ini RV003\"\n");
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
