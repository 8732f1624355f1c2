// ruvoctl test: can this relay be reached and logged into?
#include "app/connection_test.h"
#include "link/client.h"
#include "tools/command.h"
#include "tools/ini/site_environment.h"

#include <array>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "INI", "the INI file; a relative path counts from the current folder"},
    SOption{EOptionKind::Positional, "KEY", "the relay's entry in the file, as RV003, in any letter case"},
};

std::string BuildNotes() {
    std::string notes = "Opens the link of this one relay, logs in with its password and closes the link.\n"
                        "Relative paths in the file count from the current folder too. The comms server gets "
                        "the environment\n"
                        "that run-site would take from the .env file beside the INI file.\n"
                        "Prints the outcome. Exit status (2 also for a mistake in the arguments):\n";
    for (std::size_t code = 0; code < kConnectionTestMeanings.size(); ++code) {
        const std::string number = std::to_string(code);
        notes += std::string(4 - number.size(), ' ') + number + "  " +
                 std::string(kConnectionTestMeanings[code]) + "\n";
    }
    return notes + "\nExample:\n  ruvoctl test site.ini RV003";
}

/// A relay with users asks for a name beside the password. Nobody answers that, as in a run.
bool g_wasUserNameWanted = false;
void NoteUserNameWanted() {
    g_wasUserNameWanted = true;
}

EConnectionTestResult TestNotingUsers(const CArguments& arguments) {
    g_wasUserNameWanted = false;
    CP32Wrap::SetLoginCancelledCallback(&NoteUserNameWanted);
    const EConnectionTestResult result =
        TestConnection(arguments.Get("INI").c_str(), arguments.Get("KEY").c_str());
    CP32Wrap::SetLoginCancelledCallback(nullptr);
    return result;
}

int RunTest(const CArguments& arguments, SConsole& console) {
    const SSiteEnvironment environment = ApplySiteEnvironment(arguments.Get("INI"));
    PrintDiagnostics(console.error, environment.path, "warning: ", environment.diagnostics);
    const EConnectionTestResult result = TestNotingUsers(arguments);
    console.out.Write(std::string(ConnectionTestMeaning(result)) + "\n");
    if (g_wasUserNameWanted && result == EConnectionTestResult::Good) {
        console.error.Write(
            "ruvoctl: warning: the relay asked for a user name, and an INI file can hold none: "
            "a visit fails at the first thing that the relay gives to its users alone\n");
    }
    if (result == EConnectionTestResult::IniFileRefused) {
        console.error.Write("ruvoctl check tells what is wrong with the file.\n");
    }
    return static_cast<int>(result);
}

} // namespace

SCommand TestCommand() {
    static const std::string notes = BuildNotes();
    return {"test", "Test the connection to one relay", notes, kOptions, RunTest};
}

} // namespace ruvo
