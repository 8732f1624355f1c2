// Process entry of the companion program.
#include "tools/command.h"
#include "tools/command_line.h"

#include "platform/environment.h"
#include "platform/process_protection.h"
#include "platform/standard_streams.h"
#include "platform/terminal.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

namespace {

constexpr std::size_t kNarrowest = 60; // the least that the columns of events need
constexpr std::size_t kWidest = 1000;
constexpr std::size_t kUsual = 100;

/// The environment overrides the terminal: scripts and tests set it.
std::size_t ConsoleWidth() {
    const std::string text = ruvo::EnvironmentValue("COLUMNS").value_or("");
    std::size_t width = 0;
    const bool isNumber = std::from_chars(text.data(), text.data() + text.size(), width).ec == std::errc();
    if (isNumber && width >= kNarrowest && width <= kWidest) {
        return width;
    }
    const std::size_t columns = ruvo::TerminalWidth();
    return columns == 0 ? kUsual : std::clamp(columns, kNarrowest, kWidest);
}

int FailureStatus(const ruvo::SCommand* command) {
    return command != nullptr ? command->failureStatus : ruvo::kExitFailed;
}

/// The library's buffers cannot be wiped, so a secret must not reach them.
void ChooseBuffers(const ruvo::SCommand* command) {
    if (command != nullptr && !command->secretNotice.empty()) {
        std::setvbuf(stdin, nullptr, _IONBF, 0);
        std::setvbuf(stdout, nullptr, _IONBF, 0);
    } else {
        std::ios::sync_with_stdio(false);
    }
}

int RunProgram(const std::vector<std::string>& arguments, const ruvo::SCommand* command) {
    ChooseBuffers(command);
    ruvo::CTextOutput out(std::cout);
    ruvo::CTextOutput error(std::cerr);
    ruvo::SConsole console{.in = std::cin,
                           .out = out,
                           .error = error,
                           .inIsTerminal = ruvo::IsTerminal(ruvo::EStandardStream::Input),
                           .outIsTerminal = ruvo::IsTerminal(ruvo::EStandardStream::Output),
                           .errorIsTerminal = ruvo::IsTerminal(ruvo::EStandardStream::Error),
                           .width = ConsoleWidth()};
    const int status = ruvo::RunCommandLine(arguments, console);
    out.Flush();
    if (out.IsGood()) {
        return status;
    }
    // A reader that stops early (such as head) is not reported, but the exit status shows a script that the
    // output is incomplete.
    if (out.FailureCode() != EPIPE) {
        error.Write("ruvoctl: cannot write output: " + std::generic_category().message(out.FailureCode()) +
                    "\n");
    }
    // The worse of the two: the command's own status still applies.
    return status == ruvo::kExitUsage ? status : std::max(status, FailureStatus(command));
}

} // namespace

int main(int count, char** texts) {
    ruvo::OccupyClosedStandardStreams();
    ruvo::ProtectProcessMemory();
    const ruvo::SCommand* command = nullptr;
    try {
        const std::vector<std::string> arguments(texts + (count > 0 ? 1 : 0), texts + count);
        command = ruvo::FindNamedCommand(arguments);
        return RunProgram(arguments, command);
    } catch (const std::exception& failure) {
        std::cerr << "ruvoctl: " << failure.what() << '\n';
        return FailureStatus(command);
    }
}
