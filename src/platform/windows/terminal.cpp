#include "platform/terminal.h"

#include "base/secret.h"
#include "platform/windows/standard_handle.h"
#include "platform/windows/wide_text.h"

#include <atomic>

namespace ruvo {

namespace {

std::atomic<DWORD> g_savedMode{0};

// A console keeps its mode when the process ends. The next handler, the system's own, ends it.
BOOL WINAPI RestoreEcho(DWORD) {
    SetConsoleMode(StandardHandle(EStandardStream::Input), g_savedMode);
    return FALSE;
}

void WritePrompt(std::string_view prompt) {
    DWORD written = 0;
    WriteFile(StandardHandle(EStandardStream::Error), prompt.data(), static_cast<DWORD>(prompt.size()),
              &written, nullptr);
}

// False when the input ends before a line does.
bool ReadLine(std::string& line) {
    std::wstring typed;
    typed.reserve(kLongestHiddenLine); // growing would leave copies in memory
    wchar_t character = L'\0';
    DWORD count = 0;
    while (ReadConsoleW(StandardHandle(EStandardStream::Input), &character, 1, &count, nullptr) != 0 &&
           count == 1 && character != L'\n') {
        if (character != L'\r' && typed.size() < kLongestHiddenLine) {
            typed += character;
        }
        WipeBytes(&character, sizeof character);
    }
    line = Narrow(typed);
    WipeBytes(typed.data(), typed.size() * sizeof(wchar_t));
    return character == L'\n';
}

} // namespace

bool IsTerminal(EStandardStream stream) noexcept {
    DWORD mode = 0;
    return GetConsoleMode(StandardHandle(stream), &mode) != 0;
}

bool IsSystemJournal(EStandardStream /*stream*/) noexcept {
    return false;
}

std::size_t TerminalWidth() noexcept {
    CONSOLE_SCREEN_BUFFER_INFO info;
    const bool isKnown = GetConsoleScreenBufferInfo(StandardHandle(EStandardStream::Output), &info) != 0;
    return isKnown ? static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1) : 0;
}

std::optional<std::string> ReadHiddenLine(std::string_view prompt) {
    const HANDLE input = StandardHandle(EStandardStream::Input);
    DWORD mode = 0;
    if (GetConsoleMode(input, &mode) == 0) {
        return std::nullopt;
    }
    std::optional<std::string> line(std::in_place);
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
