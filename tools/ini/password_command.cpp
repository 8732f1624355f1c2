// ruvoctl password: relay passwords into the INI file, and to and from their scrambled form.
#include "base/secret.h"
#include "base/text.h"
#include "config/configuration.h"
#include "config/scramble.h"
#include "tools/command.h"
#include "tools/ini/ini_edit.h"
#include "tools/ini/password_input.h"
#include "tools/ini/relay_entries.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

constexpr std::string_view kAction = "set|clear|encrypt|decrypt";
constexpr std::string_view kBlanks = " \t";

constexpr std::array kOptions{
    SOption{
        EOptionKind::Positional, kAction,
        "to store a relay's password in an INI file or take it away, to scramble a password, or to turn a "
        "scrambled text back"},
    SOption{EOptionKind::Optional, "INI", "for set and clear: the INI file"},
    SOption{EOptionKind::Optional, "KEY", "for set and clear: the relay's key, as RV003"},
    SOption{EOptionKind::Text, "--key",
            "the relay's entry, as RV003: encrypt prints a line for the INI file, decrypt wants one of that "
            "entry",
            "KEY"},
};

constexpr std::string_view kNotes =
    "The password, or the scrambled text, is asked for without showing it; where the standard input is no\n"
    "terminal it is one line of it. decrypt also takes a whole line of the INI file. A password has 0 to 8\n"
    "characters; for encrypt a character beyond ASCII counts for each of its bytes, set takes none.\n"
    "set and clear change one line; every other byte, the owner and the permissions of the file stay.\n"
    "Exit status: 0, or 1 when the text is not usable or nothing was done (or it was, and saying so failed), "
    "or\n"
    "2 for a mistake in the arguments.\n\n"
    "Examples: the password of relay RV003, typed, then one from a password store; a line to copy\n"
    "  ruvoctl password set site.ini RV003\n"
    "  pass show relays/RV003 | ruvoctl password set site.ini RV003\n"
    "  ruvoctl password encrypt --key RV003";

constexpr std::string_view kNotice =
    "ruvoctl password: want set or clear with INI and KEY, as in ruvoctl password set site.ini RV003, or "
    "encrypt or\ndecrypt and, if at all, --key with RV and three digits.\n"
    "A password is never an argument, since other users see the arguments of a program: it is asked for, or "
    "read\nfrom the standard input.\n";

constexpr Mistake kNoEntry = "want a scrambled text, or its line of the INI file as RV003=...";
constexpr Mistake kOtherEntry = "this is not the line of the entry that --key names";
constexpr Mistake kNotScrambled = "no scrambled text: want the 22 characters that scrambling gives";
constexpr Mistake kUnreadable =
    "the text gives no readable password: a digit is wrong, or another key table made it";

Mistake Encrypt(const std::string& key, SConsole& console) {
    std::string scrambled;
    const Mistake mistake = ReadScrambled(console, "Password: ", EPasswordBytes::Any, scrambled);
    if (mistake.empty()) {
        console.out.Write((key.empty() ? key : key + "=") + scrambled + "\n");
    }
    return mistake;
}

/// Leaves the scrambled text of a line that may be one of the INI file.
Mistake ParseEntry(const std::string& wantedKey, std::string_view& line) {
    line = Trim(line, kBlanks);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
        return {};
    }
    const std::string_view key = Trim(line.substr(0, equals), kBlanks);
    if (!IsRelayKey(key)) {
        return kNoEntry;
    }
    line = Trim(line.substr(equals + 1), kBlanks);
    return wantedKey.empty() || UpperKey(key) == wantedKey ? Mistake() : kOtherEntry;
}

/// Scrambling fills a short password up with zeros. Where others stand, the text is not what it was.
bool HasZerosBehind(std::size_t length, std::string_view scrambled) {
    constexpr std::size_t kLengthAt = 1;
    CSecret asLongest(scrambled);
    asLongest.Data()[kLengthAt] = '0' + kMaxPasswordLength;
    CSecret block(kMaxPasswordLength, '\0');
    return UnscramblePassword(asLongest.Text(), block.Data()) == 0 &&
           std::all_of(block.Data() + length, block.Data() + block.Length(),
                       [](char c) { return c == '\0'; });
}

/// Takes what a run would take, unless no password can have given it; says where scrambling writes no such
/// text.
Mistake PrintPassword(const char* scrambled, SConsole& console) {
    CSecret plain(kMaxPasswordLength, '\0');
    if (UnscramblePassword(scrambled, plain.Data()) != 0) {
        return kNotScrambled;
    }
    const std::string_view password(plain.Text());
    if (std::ranges::any_of(password, IsControlCharacter) || !HasZerosBehind(password.size(), scrambled)) {
        return kUnreadable;
    }
    if (!IsScrambledText(scrambled)) {
        console.error.Write("ruvoctl: warning: scrambling writes no such text; read as a run reads it\n");
    }
    console.out.WriteSecret(password);
    console.out.Write("\n");
    return {};
}

Mistake Decrypt(const std::string& key, SConsole& console) {
    std::string line;
    const CWipeAtScopeEnd wipe(line); // it may be a plain password, entered by mistake
    if (!ReadSecret(console, "Scrambled text: ", line)) {
        return kNoInput;
    }
    std::string_view entry = line;
    if (const Mistake mistake = ParseEntry(key, entry); !mistake.empty()) {
        return mistake;
    }
    const CSecret scrambled(entry); // with a NUL behind it
    return PrintPassword(scrambled.Text(), console);
}

SIniPlan PlanSet(const CIniText& ini, const std::string& key, SConsole& console) {
    const auto relays = ListRelays(ini);
    if (std::ranges::find(relays, key, &SRelay::key) == relays.end()) {
        return {.refusal = "no section lists a relay under " + key + "; ruvoctl add adds it first"};
    }
    std::string scrambled;
    const Mistake mistake =
        ReadScrambled(console, "Password of " + key + ": ", EPasswordBytes::Ascii, scrambled);
    if (!mistake.empty()) {
        return {.refusal = std::string(mistake)};
    }
    if (IsEmptyPassword(scrambled)) {
        return {.refusal = std::string(kNoInput) + "; ruvoctl password clear takes a password away"};
    }
    return {.edits = {{std::string(kPasswordsSection), key, scrambled}},
            .done = "password of " + key + " stored"};
}

SIniPlan PlanClear(const CIniText& ini, const std::string& key, SConsole& /*console*/) {
    if (ini.FindEntry(kPasswordsSection, key) == nullptr) {
        return {.done = "no password of " + key + " was stored"};
    }
    return {.edits = {{std::string(kPasswordsSection), key, std::nullopt}},
            .done = "password of " + key + " taken away"};
}

struct SAction {
    std::string_view name;
    Mistake (*run)(const std::string& key, SConsole& console);
};
constexpr std::array kActions{SAction{"encrypt", Encrypt}, SAction{"decrypt", Decrypt}};

struct SFileAction {
    std::string_view name;
    SIniPlan (*plan)(const CIniText& ini, const std::string& key, SConsole& console);
};
constexpr std::array kFileActions{SFileAction{"set", PlanSet}, SFileAction{"clear", PlanClear}};

int Refuse(SConsole& console) {
    console.error.Write(kNotice);
    return kExitUsage;
}

int RunOnFile(const SFileAction& action, const CArguments& arguments, SConsole& console) {
    const std::string key = UpperKey(arguments.Get("KEY"));
    if (!IsRelayKey(key) || arguments.Has("--key")) {
        return Refuse(console);
    }
    return EditIniFile(arguments.Get("INI"), console,
                       [&](const CIniText& ini) { return action.plan(ini, key, console); });
}

int RunPassword(const CArguments& arguments, SConsole& console) {
    const std::string name = arguments.Get(kAction);
    const auto* const fileAction = std::ranges::find(kFileActions, name, &SFileAction::name);
    if (fileAction != kFileActions.end()) {
        return RunOnFile(*fileAction, arguments, console);
    }
    const auto* const action = std::ranges::find(kActions, name, &SAction::name);
    const std::string key = UpperKey(arguments.Get("--key"));
    if (action == kActions.end() || arguments.Has("INI") || (arguments.Has("--key") && !IsRelayKey(key))) {
        return Refuse(console);
    }
    const Mistake mistake = action->run(key, console);
    if (mistake.empty()) {
        return kExitGood;
    }
    console.error.Write("ruvoctl: " + std::string(mistake) + "\n");
    return kExitFailed;
}

} // namespace

SCommand PasswordCommand() {
    return {"password",  "Store a relay's password, scramble one, or read it back",
            kNotes,      kOptions,
            RunPassword, kNotice};
}

} // namespace ruvo
