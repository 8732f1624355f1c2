// ruvoctl password: stores relay passwords in the INI file, and converts to and from their scrambled form.
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
        "store or remove a relay's password in an INI file; scramble a password, or print a scrambled one in plain text"},
    SOption{EOptionKind::Optional, "INI", "for set and clear: INI file"},
    SOption{EOptionKind::Optional, "KEY", "for set and clear: key of the relay, for example RV003"},
    SOption{
        EOptionKind::Text, "--key",
        "key of the relay, for example RV003: encrypt prints a line for the INI file, decrypt accepts only a line with this key",
        "KEY"},
};

constexpr std::string_view kNotes =
    R"(Prompts without echo for the password or scrambled text; if standard input is not a terminal, reads one
line from it. decrypt also accepts a whole line of the INI file. A password has 0 to 8 characters. set
accepts only ASCII; encrypt accepts any bytes, each of which counts as a character.
set and clear change one line; every other byte, the owner and the permissions of the file stay as they
are.
Exit status: 0 on success, 1 on failure, 2 on a usage error. After a failure the file is unchanged, unless
only the confirmation could not be written.

Examples: store the password of RV003, typed, then from a password store; print a line to copy
  ruvoctl password set site.ini RV003
  pass show relays/RV003 | ruvoctl password set site.ini RV003
  ruvoctl password encrypt --key RV003)";

constexpr std::string_view kNotice =
    R"(usage: ruvoctl password set|clear INI KEY
       ruvoctl password encrypt|decrypt [--key KEY]
KEY is RV and three digits. A password is never an argument, because other users can see the arguments of a
program: ruvoctl prompts for it, or reads it from standard input.
)";

constexpr Mistake kNoEntry = "expected a scrambled password, or its line of the INI file (RV003=...)";
constexpr Mistake kOtherEntry = "this is not the line of the key given with --key";
constexpr Mistake kNotScrambled =
    "not a scrambled password; expected the 22 characters that \"ruvoctl password encrypt\" prints";
constexpr Mistake kUnreadable =
    "the text does not decrypt to a password: a digit is wrong, or another key table was used";

Mistake Encrypt(const std::string& key, SConsole& console) {
    std::string scrambled;
    const Mistake mistake = ReadScrambled(console, "Password: ", EPasswordBytes::Any, scrambled);
    if (mistake.empty()) {
        console.out.Write((key.empty() ? key : key + "=") + scrambled + "\n");
    }
    return mistake;
}

/// Reduces a line of the INI file to its scrambled text.
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

/// Scrambling pads a short password with zeros. Other padding means that the text was altered.
bool IsZeroPadded(std::size_t length, std::string_view scrambled) {
    constexpr std::size_t kLengthAt = 1;
    CSecret asLongest(scrambled);
    asLongest.Data()[kLengthAt] = '0' + kMaxPasswordLength;
    CSecret block(kMaxPasswordLength, '\0');
    return UnscramblePassword(asLongest.Text(), block.Data()) == 0 &&
           std::all_of(block.Data() + length, block.Data() + block.Length(),
                       [](char c) { return c == '\0'; });
}

/// Accepts what a run accepts, unless it cannot be a password; warns if scrambling never writes such a text.
Mistake PrintPassword(const char* scrambled, SConsole& console) {
    CSecret plain(kMaxPasswordLength, '\0');
    if (UnscramblePassword(scrambled, plain.Data()) != 0) {
        return kNotScrambled;
    }
    const std::string_view password(plain.Text());
    if (std::ranges::any_of(password, IsControlCharacter) || !IsZeroPadded(password.size(), scrambled)) {
        return kUnreadable;
    }
    if (!IsScrambledText(scrambled)) {
        console.error.Write("ruvoctl: warning: not a text that ruvoctl writes; decrypted as a run does\n");
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
    const CSecret scrambled(entry); // NUL-terminated
    return PrintPassword(scrambled.Text(), console);
}

SIniPlan PlanSet(const CIniText& ini, const std::string& key, SConsole& console) {
    const auto relays = ListRelays(ini);
    if (std::ranges::find(relays, key, &SRelay::key) == relays.end()) {
        return {.refusal = "no section lists a relay under " + key + "; add it first with ruvoctl add"};
    }
    std::string scrambled;
    const Mistake mistake =
        ReadScrambled(console, "Password of " + key + ": ", EPasswordBytes::Ascii, scrambled);
    if (!mistake.empty()) {
        return {.refusal = std::string(mistake)};
    }
    if (IsEmptyPassword(scrambled)) {
        return {.refusal = std::string(kNoInput) + "; ruvoctl password clear removes a password"};
    }
    return {.edits = {{std::string(kPasswordsSection), key, scrambled}},
            .done = "password of " + key + " stored"};
}

SIniPlan PlanClear(const CIniText& ini, const std::string& key, SConsole& /*console*/) {
    if (ini.FindEntry(kPasswordsSection, key) == nullptr) {
        return {.done = "no password was stored for " + key};
    }
    return {.edits = {{std::string(kPasswordsSection), key, std::nullopt}},
            .done = "password of " + key + " removed"};
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
    return {"password",  "Store, remove, scramble or unscramble a relay's password",
            kNotes,      kOptions,
            RunPassword, kNotice};
}

} // namespace ruvo
