// ruvoctl password: relay passwords to and from the scrambled form of the INI file.
#include "config/scramble.h"
#include "platform/secret.h"
#include "platform/terminal.h"
#include "tools/command.h"
#include "tools/ini/ini_forms.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace ruvo {

namespace {

constexpr std::string_view kAction = "encrypt|decrypt";
constexpr std::string_view kBlanks = " \t";

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, kAction, "to scramble a password, or to turn a scrambled text back"},
    SOption{EOptionKind::Text, "--key",
            "the relay's entry, as RV003: encrypt prints a line for the INI file, decrypt wants one of that "
            "entry"},
};

constexpr std::string_view kNotes =
    "The password, or the scrambled text, is asked for without showing it; where the standard input is no\n"
    "terminal it is one line of it. decrypt also takes a whole line of the INI file. A password has 0 to 8\n"
    "characters; a character beyond ASCII counts for each of its bytes.\n"
    "Exit status: 0, or 1 when the text is not usable, or 2 for a mistake in the arguments.\n\n"
    "Example: a line for relay RV003, added to the file (whose last section is [RUVO_PASSWORDS])\n"
    "  ruvoctl password encrypt --key RV003 >>site.ini";

constexpr std::string_view kNotice =
    "ruvoctl password: want encrypt or decrypt and, if at all, --key with RV and three digits.\n"
    "A password is never an argument, since other users see the arguments of a program: it is asked for, or "
    "read\nfrom the standard input.\n";

// What is wrong, for people; an empty text stands for nothing. None of them may repeat what was typed.
using Mistake = std::string_view;

constexpr Mistake kNoInput = "nothing was entered";
constexpr Mistake kNotTheSame = "the two passwords are not the same";
constexpr Mistake kTooLong = "the password has more than 8 characters";
constexpr Mistake kControls = "a password cannot hold control characters";
constexpr Mistake kNoEntry = "want a scrambled text, or its line of the INI file as RV003=...";
constexpr Mistake kOtherEntry = "this is not the line of the entry that --key names";
constexpr Mistake kNotScrambled = "no scrambled text: want the 22 characters that scrambling gives";
constexpr Mistake kUnreadable =
    "the text gives no readable password: a digit is wrong, or another key table made it";

/// Enough to tell any line that is too long from one that is not.
constexpr std::size_t kLongestLine = kLongestHiddenLine;

bool IsControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

bool ReadPipedLine(std::istream& in, std::string& line) {
    line.reserve(kLongestLine + 1); // growing would leave copies behind
    char c = '\0';
    bool isRead = false;
    while (line.size() <= kLongestLine && in.get(c)) {
        isRead = true;
        if (c == '\n') {
            break;
        }
        line += c;
    }
    WipeBytes(&c, 1);
    if (line.ends_with('\r')) { // a file written on Windows
        line.pop_back();
    }
    return isRead;
}

bool ReadSecret(SConsole& console, std::string_view prompt, std::string& line) {
    if (!console.inIsTerminal) {
        return ReadPipedLine(console.in, line);
    }
    std::optional<std::string> typed = ReadHiddenLine(prompt);
    if (typed) {
        line = std::move(*typed); // the buffer moves, and nothing is copied
    }
    return typed.has_value();
}

/// A person cannot see what was typed, and so types it twice.
Mistake ReadPassword(SConsole& console, std::string& password) {
    if (!ReadSecret(console, "Password: ", password)) {
        return kNoInput;
    }
    if (console.inIsTerminal) {
        std::string again;
        const CWipeAtScopeEnd wipe(again);
        if (!ReadSecret(console, "The same again: ", again)) {
            return kNoInput;
        }
        if (again != password) {
            return kNotTheSame;
        }
    }
    if (password.size() > kMaxPasswordLength) {
        return kTooLong;
    }
    return std::ranges::any_of(password, IsControl) ? kControls : Mistake();
}

Mistake Encrypt(const std::string& key, SConsole& console) {
    std::string password;
    const CWipeAtScopeEnd wipe(password);
    if (const Mistake mistake = ReadPassword(console, password); !mistake.empty()) {
        return mistake;
    }
    std::array<char, kScrambledLength + 1> scrambled{};
    if (ScramblePassword(password.c_str(), scrambled.data()) != 0) {
        return kTooLong;
    }
    console.out.Write((key.empty() ? key : key + "=") + scrambled.data() + "\n");
    return {};
}

std::string_view Trim(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string UpperCase(std::string_view text) {
    std::string upper(text);
    std::ranges::transform(upper, upper.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return upper;
}

/// Leaves the scrambled text of a line that may be one of the INI file.
Mistake TakeEntry(const std::string& wantedKey, std::string_view& line) {
    line = Trim(line);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
        return {};
    }
    const std::string_view key = Trim(line.substr(0, equals));
    if (!IsRelayKey(key)) {
        return kNoEntry;
    }
    line = Trim(line.substr(equals + 1));
    return wantedKey.empty() || UpperCase(key) == wantedKey ? Mistake() : kOtherEntry;
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
    if (std::ranges::any_of(password, IsControl) || !HasZerosBehind(password.size(), scrambled)) {
        return kUnreadable;
    }
    if (!CanBeScrambled(scrambled)) {
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
    if (const Mistake mistake = TakeEntry(key, entry); !mistake.empty()) {
        return mistake;
    }
    const CSecret scrambled(entry); // with a NUL behind it
    return PrintPassword(scrambled.Text(), console);
}

struct SAction {
    std::string_view name;
    Mistake (*run)(const std::string& key, SConsole& console);
};
constexpr std::array kActions{SAction{"encrypt", Encrypt}, SAction{"decrypt", Decrypt}};

int RunPassword(const CArguments& arguments, SConsole& console) {
    const auto* const action = std::ranges::find(kActions, arguments.Get(kAction), &SAction::name);
    const std::string key = UpperCase(arguments.Get("--key"));
    if (action == kActions.end() || (arguments.Has("--key") && !IsRelayKey(key))) {
        console.error.Write(kNotice);
        return kExitUsage;
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
    return {"password", "Scramble a relay's password, or read it back", kNotes, kOptions, RunPassword,
            kNotice};
}

} // namespace ruvo
