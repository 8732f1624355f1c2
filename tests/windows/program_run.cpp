#include "windows/program_run.h"

#include "platform/modules.h"

#include <cstdio>
#include <cstdlib>

namespace ruvo::test {

namespace {

constexpr const char* kFolder = "C:\\ruvo-run";
constexpr DWORD kLongestRun = 300000; // milliseconds, for an emulated machine
constexpr DWORD kLook = 20;
constexpr int kTextOfBox = 0xFFFF; // number of the control that holds a message box's text

struct SSearch {
    DWORD processId;
    std::vector<HWND> found;
};

// (A lambda has not the calling convention that 32-bit Windows wants.)
BOOL CALLBACK TakeWindow(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<SSearch*>(parameter);
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == search.processId)
        search.found.push_back(window);
    return TRUE;
}

void ServeMessages() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE)
        DispatchMessageA(&message);
}

} // namespace

CProcess::CProcess(const std::string& program, const std::string& arguments) {
    std::string line = "\"" + CodeFolder() + "\\" + program + "\" " + arguments;
    STARTUPINFOA start = {};
    start.cb = sizeof start;
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, "C:\\", &start,
                       &m_information) == FALSE) {
        std::printf("cannot start %s\n", line.c_str());
        std::exit(1);
    }
}

CProcess::~CProcess() {
    if (!HasEnded())
        TerminateProcess(m_information.hProcess, 99);
    CloseHandle(m_information.hThread);
    CloseHandle(m_information.hProcess);
}

int CProcess::Wait(DWORD milliseconds) const {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (WaitForSingleObject(m_information.hProcess, kLook) != WAIT_OBJECT_0) {
        ServeMessages();
        if (GetTickCount64() > end)
            return -1;
    }
    DWORD status = 0;
    GetExitCodeProcess(m_information.hProcess, &status);
    return static_cast<int>(status);
}

std::vector<HWND> WindowsOf(DWORD processId) {
    SSearch search{processId, {}};
    EnumWindows(TakeWindow, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

SBox AnswerBox(const CProcess& process, DWORD milliseconds) {
    HWND box = nullptr;
    for (const ULONGLONG end = GetTickCount64() + milliseconds; box == nullptr;) {
        for (const HWND window : WindowsOf(process.Id())) {
            char className[32] = {};
            GetClassNameA(window, className, sizeof className);
            if (std::string(className) == "#32770" && IsWindowVisible(window) != FALSE)
                box = window;
        }
        if (process.HasEnded() || GetTickCount64() > end)
            return {};
        Sleep(kLook);
    }
    std::string title(1024, '\0');
    std::string text(8192, '\0');
    // The box is there before its controls are.
    for (int i = 0; i < 100 && GetDlgItem(box, IDOK) == nullptr; ++i)
        Sleep(kLook);
    title.resize(static_cast<std::size_t>(GetWindowTextA(box, title.data(), static_cast<int>(title.size()))));
    text.resize(GetDlgItemTextA(box, kTextOfBox, text.data(), static_cast<int>(text.size())));
    SendMessageA(GetDlgItem(box, IDOK), BM_CLICK, 0, 0);
    return {title, text};
}

CDebuggerOutput::CDebuggerOutput()
    : m_ready(CreateEventA(nullptr, FALSE, FALSE, "DBWIN_BUFFER_READY")),
      m_data(CreateEventA(nullptr, FALSE, FALSE, "DBWIN_DATA_READY")),
      m_stop(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
      m_mapping(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, "DBWIN_BUFFER")),
      m_listener([this] { Listen(); }) {}

CDebuggerOutput::~CDebuggerOutput() {
    Of(0);
    for (const HANDLE handle : {m_ready, m_data, m_stop, m_mapping})
        CloseHandle(handle);
}

void CDebuggerOutput::Listen() {
    struct SBuffer {
        DWORD processId;
        char text[4096 - sizeof(DWORD)];
    };
    const auto* const buffer = static_cast<const SBuffer*>(MapViewOfFile(m_mapping, FILE_MAP_READ, 0, 0, 0));
    const HANDLE either[] = {m_data, m_stop};
    SetEvent(m_ready);
    while (WaitForMultipleObjects(2, either, FALSE, INFINITE) == WAIT_OBJECT_0) {
        m_said.emplace_back(buffer->processId, buffer->text);
        SetEvent(m_ready);
    }
    UnmapViewOfFile(buffer);
}

std::string CDebuggerOutput::Of(DWORD processId) {
    SetEvent(m_stop);
    if (m_listener.joinable())
        m_listener.join();
    std::string said;
    for (const auto& [process, text] : m_said)
        said += process == processId ? text : "";
    return said;
}

CRunFolder::CRunFolder(const std::string& substation, const std::string& general,
                       const std::string& sections) {
    std::filesystem::remove_all(kFolder);
    std::filesystem::create_directory(kFolder);
    SetEnvironmentVariableA("P32LS_SUBSTATION", Path("substation.toml").c_str());
    Write("substation.toml", "trace = \"trace.txt\"\n" + substation);
    WriteIni(general, sections);
}

void CRunFolder::WriteIni(const std::string& general, const std::string& sections) const {
    Write("site.ini", "[RUVO_GENERAL]\r\nEventRootDir=" + Path("ev") +
                          "\r\nErrorLogPathname=" + Path("run.log") + "\r\n" + general + "\r\n" + sections);
}

void CRunFolder::Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
}

std::string CRunFolder::Path(const std::string& name) {
    return std::string(kFolder) + "\\" + name;
}

int CRunFolder::Run() const {
    return CProcess("RUVO.exe", Path("site.ini")).Wait(kLongestRun);
}

} // namespace ruvo::test
