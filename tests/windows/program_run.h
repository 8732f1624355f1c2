// Runs the built extractor on Windows against a substation file, and looks at what it shows and says
// meanwhile.
#pragma once

#include "e2e/outcome.h"
#include "platform/windows/system.h"

#include <string>
#include <thread>
#include <vector>

namespace ruvo::test {

/// A process of our own; ended by force when it is still there at the end.
class CProcess {
public:
    /// Starts "PROGRAM ARGUMENTS" from the folder of the test programs.
    CProcess(const std::string& program, const std::string& arguments);
    CProcess(const CProcess&) = delete;
    CProcess& operator=(const CProcess&) = delete;
    ~CProcess();

    DWORD Id() const { return m_information.dwProcessId; }
    /// Waits, serving the messages of this program's windows; the exit status, or -1 when the time has
    /// passed.
    int Wait(DWORD milliseconds) const;
    bool HasEnded() const { return WaitForSingleObject(m_information.hProcess, 0) == WAIT_OBJECT_0; }

private:
    PROCESS_INFORMATION m_information = {};
};

/// All top-level windows of a process, those that are never seen, too.
std::vector<HWND> WindowsOf(DWORD processId);

/// What a message box of another process showed.
struct SBox {
    std::string title;
    std::string text;
};

/// Waits for a message box of the process, reads it and presses its button. An empty title when none came.
SBox AnswerBox(const CProcess& process, DWORD milliseconds);

/// Catches what processes say to the debugger, as long as it lives.
class CDebuggerOutput {
public:
    CDebuggerOutput();
    CDebuggerOutput(const CDebuggerOutput&) = delete;
    CDebuggerOutput& operator=(const CDebuggerOutput&) = delete;
    ~CDebuggerOutput();

    /// Ends the catching; all that the process said.
    std::string Of(DWORD processId);

private:
    void Listen();

    HANDLE m_ready;
    HANDLE m_data;
    HANDLE m_stop;
    HANDLE m_mapping;
    std::vector<std::pair<DWORD, std::string>> m_said; ///< by which process, and what
    std::thread m_listener;
};

/// The folder in which runs take place, emptied for each of them.
class CRunFolder {
public:
    CRunFolder(const std::string& substation, const std::string& general, const std::string& sections);

    void WriteIni(const std::string& general, const std::string& sections) const;
    void Write(const std::string& name, const std::string& bytes) const;
    static std::string Path(const std::string& name);
    std::string Log() const { return WithoutTimeStamps(FileBytes(Path("run.log"))); }
    std::map<std::string, std::string> Files(const std::string& folder = "ev") const {
        return FilesBelow(Path(folder));
    }
    /// One normal run; its exit status.
    int Run() const;
};

} // namespace ruvo::test
