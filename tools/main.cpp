// Process entry of the companion program.
#include "tools/command.h"
#include "tools/command_line.h"

#include "platform/console_buffer.h"
#include "platform/environment.h"
#include "platform/native_text.h"
#include "platform/process_protection.h"
#include "platform/standard_streams.h"
#include "platform/terminal.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <streambuf>
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

/// A standard stream, through the console's own buffer where it takes one.
template <class TStream>
class CStream {
public:
    CStream(ruvo::EStandardStream which, TStream& usual)
        : m_buffer(ruvo::ConsoleBuffer(which)), m_own(m_buffer.get()), m_usual(usual) {}
    TStream& Get() { return m_buffer != nullptr ? m_own : m_usual; }

private:
    std::unique_ptr<std::streambuf> m_buffer;
    TStream m_own;
    TStream& m_usual;
};

int RunProgram(const std::vector<std::string>& arguments, const ruvo::SCommand* command) {
    ChooseBuffers(command);
    CStream<std::istream> inStream(ruvo::EStandardStream::Input, std::cin);
    CStream<std::ostream> outStream(ruvo::EStandardStream::Output, std::cout);
    CStream<std::ostream> errorStream(ruvo::EStandardStream::Error, std::cerr);
    ruvo::CTextOutput out(outStream.Get());
    ruvo::CTextOutput error(errorStream.Get());
    ruvo::SConsole console{.in = inStream.Get(),
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
    ruvo::UseUtf8Texts();
    ruvo::OccupyClosedStandardStreams();
    ruvo::ProtectProcessMemory();
    const ruvo::SCommand* command = nullptr;
    try {
        const std::vector<std::string> arguments = ruvo::ProgramArguments(count, texts);
        command = ruvo::FindNamedCommand(arguments);
        return RunProgram(arguments, command);
    } catch (const std::exception& failure) {
        std::cerr << "ruvoctl: " << failure.what() << '\n';
        return FailureStatus(command);
    }
}
