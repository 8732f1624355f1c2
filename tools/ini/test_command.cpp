// ruvoctl test: tests the connection and the login to one relay.
#include "app/connection_test.h"
#include "link/client.h"
#include "tools/command.h"
#include "tools/ini/site_environment.h"

#include <array>

namespace ruvo {

namespace {

constexpr std::array kOptions{
    SOption{EOptionKind::Positional, "INI",
            "INI file; a relative path is resolved against the current folder"},
    SOption{EOptionKind::Positional, "KEY", "key of the relay, for example RV003; case does not matter"},
};

std::string BuildNotes() {
    std::string notes =
        "Opens the link to one relay, logs in with its password and closes the link.\n"
        "Relative paths in the file are also resolved against the current folder. The comms server gets the\n"
        "environment that run-site reads from the .env file next to the INI file.\n"
        "Prints the result. Exit status (2 also on a usage error):\n";
    for (std::size_t code = 0; code < kConnectionTestMeanings.size(); ++code) {
        const std::string number = std::to_string(code);
        notes += std::string(4 - number.size(), ' ') + number + "  " +
                 std::string(kConnectionTestMeanings[code]) + "\n";
    }
    return notes + "\nExample:\n  ruvoctl test site.ini RV003";
}

/// A relay with user accounts also asks for a user name. As in a run, it gets no answer.
bool g_wasUserNameRequested = false;
void NoteUserNameRequested() {
    g_wasUserNameRequested = true;
}

EConnectionTestResult TestNotingUsers(const CArguments& arguments) {
    g_wasUserNameRequested = false;
    CP32Wrap::SetLoginCancelledCallback(&NoteUserNameRequested);
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
    if (g_wasUserNameRequested && result == EConnectionTestResult::Good) {
        console.error.Write(
            "ruvoctl: warning: the relay asked for a user name, which an INI file cannot contain; "
            "a visit fails at the first data that requires a user name\n");
    }
    if (result == EConnectionTestResult::IniFileRefused) {
        console.error.Write("Run ruvoctl check to see what is wrong with the file.\n");
    }
    return static_cast<int>(result);
}

} // namespace

SCommand TestCommand() {
    static const std::string notes = BuildNotes();
    return {"test", "Test the connection to one relay", notes, kOptions, RunTest};
}

} // namespace ruvo
