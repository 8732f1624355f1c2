#include "sim/windows/error_report.h"

#include "link/windows/com_headers.h"
#include "platform/debug_output.h"

namespace ruvo::sim {
namespace {

void Write(HANDLE output, const std::string& text) {
    DWORD written = 0;
    WriteFile(output, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void WriteToConsole(const std::string& text) {
    if (AttachConsole(ATTACH_PARENT_PROCESS) == 0) {
        return;
    }
    const HANDLE console =
        CreateFileA("CONOUT$", GENERIC_WRITE, FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (console != INVALID_HANDLE_VALUE) {
        Write(console, text);
        CloseHandle(console);
    }
    FreeConsole();
}

} // namespace

void ReportError(const std::string& line) noexcept {
    try {
        const std::string text = "p32ls-sim: " + line + "\r\n";
        WriteDebugOutput(text);
        const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
        error != nullptr&& error != INVALID_HANDLE_VALUE ? Write(error, text) : WriteToConsole(text);
    } catch (...) { // out of memory: nothing is said
    }
}

} // namespace ruvo::sim
