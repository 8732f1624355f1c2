#include "platform/child_program.h"

#include "platform/file.h"
#include "platform/files.h"
#include "platform/windows/owned_handle.h"
#include "platform/windows/wide_text.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

namespace ruvo {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr DWORD kPause = 50; // a pipe cannot be waited for beside a process

/// As the system's own programs take a command line apart.
std::string Quoted(const std::string& word) {
    if (!word.empty() && word.find_first_of(" \t\"") == std::string::npos) {
        return word;
    }
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char c : word) {
        if (c == '"') {
            quoted.append(backslashes + 1, '\\'); // each of them and the quote itself
        }
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, '\\') + '"';
}

std::string CommandLineOf(const SChildProgram& program) {
    std::string line = '"' + program.path + '"';
    for (const std::string& argument : program.arguments) {
        line += ' ' + Quoted(argument);
    }
    return line;
}

std::wstring BlockOf(std::vector<std::string> variables) {
    std::ranges::sort(variables);
    std::wstring block;
    for (const std::string& variable : variables) {
        block += Wide(variable) + L'\0';
    }
    return block + L'\0';
}

SECURITY_ATTRIBUTES Inherited() {
    return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
}

/// A file that goes with its last handle.
COwnedHandle OpenInput(const std::string& input) {
    SECURITY_ATTRIBUTES inherited = Inherited();
    if (input.empty()) {
        return COwnedHandle(CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                        OPEN_EXISTING, 0, nullptr));
    }
    const std::string path = MakeUniqueFile(TemporaryFolder(), "ruvo");
    COwnedHandle file(CreateFileW(Wide(path).c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                                  &inherited, TRUNCATE_EXISTING,
                                  FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    DWORD count = 0;
    const bool isGood =
        file.IsOpen() &&
        WriteFile(file.Get(), input.data(), static_cast<DWORD>(input.size()), &count, nullptr) != 0 &&
        SetFilePointer(file.Get(), 0, nullptr, FILE_BEGIN) == 0;
    return isGood ? std::move(file) : COwnedHandle();
}

BOOL CALLBACK AskWindow(HWND window, LPARAM process) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == static_cast<DWORD>(process)) {
        PostMessageW(window, WM_CLOSE, 0, 0);
    }
    return TRUE;
}

std::string LastFailure() {
    return SystemErrorText(static_cast<long>(GetLastError()));
}

} // namespace

struct CChildProgram::SHandle {
    DWORD number = 0; ///< 0 before its start and after its end
    COwnedHandle process;
    COwnedHandle job; ///< of a group
    COwnedHandle output;
    std::mutex mutex; ///< of `number`, which may be another's after its end

    void Kill() const {
        if (job.IsOpen()) {
            TerminateJobObject(job.Get(), 1);
        } else {
            TerminateProcess(process.Get(), 1);
        }
    }
    void TakeOutput(const SWatch& watch) const {
        std::array<char, 4096> piece{};
        DWORD count = 0;
        for (int pieces = 0; pieces < 1024; ++pieces) {
            if (PeekNamedPipe(output.Get(), nullptr, 0, nullptr, &count, nullptr) == 0 || count == 0 ||
                ReadFile(output.Get(), piece.data(), static_cast<DWORD>(piece.size()), &count, nullptr) ==
                    0) {
                return;
            }
            if (watch.take) {
                watch.take({piece.data(), count});
            }
        }
    }
};

bool IsProgram(const std::string& path) {
    constexpr std::array kEndings{".exe", ".cmd", ".bat"};
    const std::size_t dot = path.rfind('.');
    return dot != std::string::npos && std::ranges::any_of(kEndings, [&](const char* ending) {
               return lstrcmpiA(path.c_str() + dot, ending) == 0;
           });
}

CChildProgram::CChildProgram() : m_handle(std::make_unique<SHandle>()) {}

CChildProgram::~CChildProgram() = default;

std::string CChildProgram::Start(const SChildProgram& program) {
    SECURITY_ATTRIBUTES inherited = Inherited();
    HANDLE out = nullptr;
    HANDLE in = nullptr;
    const COwnedHandle input = OpenInput(program.input);
    if (!input.IsOpen() || CreatePipe(&out, &in, &inherited, 0) == 0) {
        return LastFailure();
    }
    COwnedHandle output(out);
    const COwnedHandle written(in);
    SetHandleInformation(out, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.Get();
    startup.hStdOutput = in;
    startup.hStdError = in;
    PROCESS_INFORMATION made = {};
    std::wstring line = Wide(CommandLineOf(program));
    std::wstring block = BlockOf(program.environment);
    constexpr DWORD kFlags = CREATE_NO_WINDOW | CREATE_SUSPENDED | CREATE_UNICODE_ENVIRONMENT;
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, kFlags, block.data(), nullptr, &startup,
                       &made) == 0) {
        return LastFailure();
    }
    const COwnedHandle thread(made.hThread);
    const std::lock_guard lock(m_handle->mutex);
    m_handle->process = COwnedHandle(made.hProcess);
    m_handle->number = made.dwProcessId;
    m_handle->output = std::move(output);
    m_handle->job = COwnedHandle(program.isGroup ? CreateJobObjectA(nullptr, nullptr) : nullptr);
    if (m_handle->job.IsOpen() && AssignProcessToJobObject(m_handle->job.Get(), made.hProcess) == 0) {
        m_handle->job = COwnedHandle();
    }
    ResumeThread(made.hThread);
    return {};
}

std::uint64_t CChildProgram::Number() const {
    return m_handle->number;
}

SChildEnd CChildProgram::Await(const SWatch& watch) {
    const auto begun = Clock::now();
    auto looked = begun;
    SChildEnd end;
    while (WaitForSingleObject(m_handle->process.Get(), kPause) == WAIT_TIMEOUT) {
        m_handle->TakeOutput(watch);
        if (watch.every != SWatch::kForever && Clock::now() - looked >= watch.every) {
            watch.look();
            looked = Clock::now();
        }
        if (!end.hasTimedOut && watch.most != SWatch::kForever && Clock::now() - begun >= watch.most) {
            end.hasTimedOut = true;
            m_handle->Kill();
        }
    }
    m_handle->TakeOutput(watch);
    const std::lock_guard lock(m_handle->mutex);
    DWORD status = 0;
    GetExitCodeProcess(m_handle->process.Get(), &status);
    end.status = status;
    m_handle->number = 0;
    m_handle->process = COwnedHandle();
    m_handle->output = COwnedHandle();
    m_handle->job = COwnedHandle();
    return end;
}

void CChildProgram::AskToEnd(const char* /*request*/) {
    const std::lock_guard lock(m_handle->mutex);
    if (m_handle->number != 0) {
        EnumWindows(AskWindow, static_cast<LPARAM>(m_handle->number));
    }
}

} // namespace ruvo
