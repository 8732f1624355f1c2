#include "platform/terminal.h"

#include "base/secret.h"
#include "platform/windows/system.h"

#include <array>
#include <atomic>

namespace ruvo {

namespace {

std::atomic<DWORD> g_savedMode{0};

HANDLE HandleOf(EStandardStream stream) noexcept {
    constexpr std::array<DWORD, 3> kHandles{STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
    return GetStdHandle(kHandles[static_cast<std::size_t>(stream)]);
}

// A console keeps its mode when the process ends. The next handler, the system's own, ends it.
BOOL WINAPI RestoreEcho(DWORD) {
    SetConsoleMode(HandleOf(EStandardStream::Input), g_savedMode);
    return FALSE;
}

void WritePrompt(std::string_view prompt) {
    DWORD written = 0;
    WriteFile(HandleOf(EStandardStream::Error), prompt.data(), static_cast<DWORD>(prompt.size()), &written,
              nullptr);
}

// False when the input ends before a line does.
bool ReadLine(std::string& line) {
    char character = '\0';
    DWORD count = 0;
    while (ReadFile(HandleOf(EStandardStream::Input), &character, 1, &count, nullptr) != 0 && count == 1 &&
           character != '\n') {
        if (character != '\r' && line.size() < kLongestHiddenLine) {
            line += character;
        }
        WipeBytes(&character, 1);
    }
    return character == '\n';
}

} // namespace

bool IsTerminal(EStandardStream stream) noexcept {
    DWORD mode = 0;
    return GetConsoleMode(HandleOf(stream), &mode) != 0;
}

bool IsSystemJournal(EStandardStream /*stream*/) noexcept {
    return false;
}

std::size_t TerminalWidth() noexcept {
    CONSOLE_SCREEN_BUFFER_INFO info;
    const bool isKnown = GetConsoleScreenBufferInfo(HandleOf(EStandardStream::Output), &info) != 0;
    return isKnown ? static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1) : 0;
}

std::optional<std::string> ReadHiddenLine(std::string_view prompt) {
    const HANDLE input = HandleOf(EStandardStream::Input);
    DWORD mode = 0;
    if (GetConsoleMode(input, &mode) == 0) {
        return std::nullopt;
    }
    std::optional<std::string> line(std::in_place);
    line->reserve(kLongestHiddenLine); // growing would leave copies in memory
    g_savedMode = mode;
    SetConsoleCtrlHandler(&RestoreEcho, TRUE);
    SetConsoleMode(input, (mode | ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT) & ~DWORD{ENABLE_ECHO_INPUT});
    WritePrompt(prompt);
    const bool isRead = ReadLine(*line);
    RestoreEcho(0);
    SetConsoleCtrlHandler(&RestoreEcho, FALSE);
    WritePrompt("\r\n");
    if (!isRead) {
        WipeText(*line);
        line.reset();
    }
    return line;
}

} // namespace ruvo
