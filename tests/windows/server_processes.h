// The processes of the simulated comms server.
#pragma once

#include "platform/windows/system.h"

#include <string>
#include <tlhelp32.h>
#include <vector>

namespace ruvo::test {

inline constexpr const char* kServerProgram = "p32ls-sim.exe";

inline std::vector<DWORD> ServerProcesses() {
    std::vector<DWORD> found;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32First(snapshot, &entry); more != FALSE; more = Process32Next(snapshot, &entry))
        if (std::string(entry.szExeFile) == kServerProgram)
            found.push_back(entry.th32ProcessID);
    CloseHandle(snapshot);
    return found;
}

/// How many there were to be ended.
inline int KillServer() {
    int ended = 0;
    for (const DWORD id : ServerProcesses()) {
        const HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, id);
        ended += TerminateProcess(process, 9) != FALSE ? 1 : 0;
        CloseHandle(process);
    }
    return ended;
}

} // namespace ruvo::test
