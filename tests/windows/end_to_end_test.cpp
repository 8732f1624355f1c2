// The built programs from outside: the same runs as on every system, and what only Windows has: message
// boxes, the registry, the debugger, other programs that load the library, and a server that is a process of
// its own.
#include "e2e/cases.h"
#include "platform/file.h"
#include "platform/modules.h"
#include "platform/single_instance.h"
#include "windows/checks.h"
#include "windows/program_run.h"
#include "windows/server_processes.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>

namespace ruvo::test {

namespace {

constexpr const char* kSerial = "[RUVO_SERIAL]\nRV001=5\n";
constexpr const char* kInstanceName = "RUVO:3B38A5F0-71B0-11d3-9C2B-00600816C2BEHX";
constexpr const char* kStudioKey = "SOFTWARE\\Halvex\\Norvo Q7 Studio";
constexpr DWORD kPatience = 300000; // milliseconds, for an emulated machine

std::string Plain() {
    return kLink + Relay("serial = 5", kTrip);
}

std::string Listed(const std::map<std::string, std::string>& files) {
    std::string listed;
    for (const auto& [name, bytes] : files)
        listed += name + ": " + bytes + "; ";
    return listed;
}

/// COM finds the server, and the server its substation, by what is registered once.
void RegisterServer() {
    const CRunFolder run(Plain(), "", kSerial);
    const CProcess registration(kServerProgram, "/RegServer " + CRunFolder::Path("substation.toml"));
    Equal(registration.Wait(kPatience), 0, "registering the server");
}

void CheckSharedCases() {
    for (const SCase& test : kRunCases) {
        const CRunFolder run(test.substation, test.general, test.sections);
        Equal(run.Run(), 0, std::string(test.name) + ": exit status");
        Equal(run.Log(), test.log, std::string(test.name) + ": log");
        Equal(Listed(run.Files()), Listed(test.files), std::string(test.name) + ": day files");
    }
}

void CheckBox(const std::string& arguments, const std::string& title, const std::string& text,
              const std::string& about) {
    const CProcess program("RUVO.exe", arguments);
    const SBox box = AnswerBox(program, kPatience);
    Equal(box.title, title, about + ": title");
    Equal(box.text, text, about + ": text");
    Equal(program.Wait(kPatience), 0, about + ": exit status");
}

void CheckOnlyMode() {
    const CRunFolder run(Plain(), "", kSerial);
    const std::string ini = CRunFolder::Path("site.ini");
    const std::string start = "Ruvo\nVersion Number: " RUVO_VERSION "\n\nINI file: " + ini + "\n\n";
    CheckBox("/t " + ini, "RUVO", start + "Success - No input errors found.\n", "check-only");
    run.WriteIni("BaudRate=960\n", kSerial);
    CheckBox("-t " + ini, "RUVO", start + "BaudRate value error.\n", "check-only with an error");
    Expect(run.Files().empty() && run.Log().empty(), "check-only touches nothing");
}

/// A second instance brings the first one's window forward, logs, and contacts nobody.
void CheckSecondInstance() {
    const CRunFolder run(Plain(), "", kSerial);
    CInstanceMarker first;
    Expect(first.Claim(kInstanceName) == EInstanceClaim::Claimed, "the first instance");
    const HWND window = CreateWindowA(kInstanceName, "first", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 200,
                                      100, nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
    ShowWindow(window, SW_MINIMIZE);
    Expect(IsIconic(window) != FALSE, "the first instance's window is minimised");
    Equal(run.Run(), 0, "second instance: exit status");
    Equal(run.Log(), "Only one instance can be running at one time.\n", "second instance: log");
    Expect(IsIconic(window) == FALSE, "the first instance's window is restored");
    Expect(run.Files().empty() && !std::filesystem::exists(CRunFolder::Path("trace.txt")),
           "second instance: no relay was contacted");
    DestroyWindow(window);
}

void SetDestination(HKEY root, const std::string& folder) {
    RegSetKeyValueA(root, kStudioKey, "Q7SecurityLogs", REG_SZ, folder.c_str(),
                    static_cast<DWORD>(folder.size() + 1));
}

void CheckRegistryDestination() {
    const std::map<std::string, std::string> wanted{{kDay, Header("000001") + Trip()}};
    {
        const CRunFolder run(Plain(), "", kSerial);
        SetDestination(HKEY_CURRENT_USER, CRunFolder::Path("user"));
        Equal(run.Run(), 0, "a destination of the user: exit status");
        Equal(Listed(run.Files("user\\RUVO")), Listed(wanted), "a destination of the user");
        Expect(run.Files().empty(), "a destination of the user replaces the INI file's");
    }
    const CRunFolder run(Plain(), "", kSerial);
    SetDestination(HKEY_CURRENT_USER, "Q:\\none");
    SetDestination(HKEY_LOCAL_MACHINE, CRunFolder::Path("machine"));
    CheckBox(CRunFolder::Path("site.ini"), "Information",
             "Registry entry with destination path for current user is invalid.\n"
             "Events will be extracted with use of default application settings.\n"
             "Destination path: " +
                 CRunFolder::Path("machine"),
             "an unusable destination of the user");
    Equal(Listed(run.Files("machine\\RUVO")), Listed(wanted), "a destination of the machine");
    RegDeleteTreeA(HKEY_CURRENT_USER, kStudioKey);
    RegDeleteTreeA(HKEY_LOCAL_MACHINE, kStudioKey);
}

void CheckDebuggerLines() {
    const CRunFolder run(kLink + Relay("serial = 5", kLocked + kTrip), "", kSerial + kPassword);
    CDebuggerOutput output;
    const CProcess program("RUVO.exe", CRunFolder::Path("site.ini"));
    Equal(program.Wait(kPatience), 0, "a login: exit status");
    Equal(WithoutTimes(output.Of(program.Id())), kLoginTrace, "a login: what the debugger sees");
}

/// The entry points, called by another program: this one.
void CheckLibrary() {
    const bool decorated = sizeof(void*) == 4;
    CModule library;
    Expect(library.Load(CodeFolder() + "\\ruvo.dll"), "the library");
    const auto entry = [&](const std::string& name) {
        using Function = std::int32_t(__stdcall*)(const char*, const char*);
        const std::string exported = decorated ? "_" + name + "@8" : name;
        const auto function = reinterpret_cast<Function>(library.FindEntry(exported.c_str()));
        Expect(function != nullptr, exported);
        return function;
    };
    const auto test = entry("TestConnectionExt");
    char scrambled[23] = {};
    char plain[9] = {};
    // The second argument is what they write to.
    Equal(entry("encrypt")("AbC123", scrambled), 0, "scrambling");
    Equal(entry("decrypt")(scrambled, plain), 0, "turning back");
    Equal(std::string(plain), "AbC123", "the password");
    const CRunFolder run(kLink + Relay("serial = 5", kLocked + kTrip), "", kSerial + kPassword);
    const std::string ini = CRunFolder::Path("site.ini");
    Equal(test(ini.c_str(), "rv001"), 0, "the right password");
    Equal(test(ini.c_str(), "RV002"), 3, "no such key");
    Equal(test(CRunFolder::Path("none.ini").c_str(), "RV001"), 2, "no such file");
    run.WriteIni("", kSerial);
    Equal(test(ini.c_str(), "RV001"), 10, "the password missing");
}

void CheckCompanion() {
    const CRunFolder run(Plain(), "", kSerial);
    const CProcess program("ruvoctl.exe", "test " + CRunFolder::Path("site.ini") + " RV001");
    Equal(program.Wait(kPatience), 0, "ruvoctl test");
}

/// What a program writes on its standard output.
std::string Shown(const std::string& program, const std::string& arguments) {
    const std::string file = CRunFolder::Path("shown");
    std::system(("\"\"" + CodeFolder() + "\\" + program + "\" " + arguments + " > " + file + "\"").c_str());
    return FileBytes(file);
}

/// A relay wants its password again in the middle of a visit, and refuses it. What it had given by then is
/// set aside, listed, and stored once.
void CheckRecover() {
    std::string more = kLocked;
    more.insert(more.find("[relay.cells]"), "forget_after = 10\n");
    for (int event = 0; event < 8; ++event)
        more += kTrip;
    const CRunFolder run(
        kLink + Relay("serial = 5", more) +
            "[[fault]]\noperation = \"ChangeSetting\"\ncell = \"00.02\"\nfrom = 3\nreply = 4\n",
        "", kSerial + kPassword);
    const std::string ini = CRunFolder::Path("site.ini");
    Equal(run.Run(), 0, "a refused password: exit status");
    const std::string log = run.Log();
    const std::string mark = " set aside in ";
    const std::size_t begin = log.find(mark);
    const std::size_t end = log.find(": a password was refused.");
    Expect(begin != std::string::npos && end != std::string::npos, "the set-aside file: " + log);
    if (begin == std::string::npos || end == std::string::npos)
        return;
    const std::string file = log.substr(begin + mark.size(), end - begin - mark.size());
    const int events = std::atoi(log.c_str() + log.rfind('\n', begin) + 1);
    Expect(events > 0, "events that are set aside: " + log);
    Equal(Listed(run.Files()), "", "nothing is in a day file");
    Expect(Shown("ruvoctl.exe", "recover " + ini).find(file) != std::string::npos, "recover lists it");
    const auto store = [&] {
        return CProcess("ruvoctl.exe", "recover " + ini + " \"" + file + "\"").Wait(kPatience);
    };
    std::map<std::string, std::string> wanted{{kDay, Header("000001")}};
    for (int event = 0; event < events; ++event)
        wanted[kDay] += Trip();
    Equal(store(), 0, "recover stores it");
    Equal(Listed(run.Files()), Listed(wanted), "its events are in the day file");
    Expect(!FileBytes(file + ".done").empty(), "it is marked");
    Equal(store(), 1, "recover twice");
    Equal(Listed(run.Files()), Listed(wanted), "twice is once");
    Expect(Shown("ruvoctl.exe", "recover " + ini).find("nothing is left") != std::string::npos,
           "and nothing is listed");
}

/// What a file begins with that a run has open, too: as one that it may remove, which a stream does not
/// share.
std::string Beginning(const std::string& path) {
    CFile file;
    std::array<std::uint8_t, 4096> bytes{};
    std::size_t count = 0;
    const bool isRead =
        file.Open(path, {.read = true, .removable = true}).Good() && file.Read(bytes, count).Good();
    return isRead ? std::string(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)) : "";
}

/// Whether the run that is under way has taken a trip from its relay.
bool HasTakenTrip() {
    std::error_code code; // the run makes and removes files meanwhile
    const std::filesystem::path folder = std::string(std::getenv("LOCALAPPDATA")) + "\\ruvo";
    const std::filesystem::recursive_directory_iterator entries(folder, code);
    return std::any_of(begin(entries), end(entries), [](const auto& entry) {
        return entry.path().extension() == ".journal" &&
               Beginning(entry.path().string()).find("Trip") != std::string::npos;
    });
}

/// Asks a run that would never end to end, in the middle of its visit; its exit status.
int EndRun(const std::function<void(DWORD processId)>& ask) {
    const CProcess program("RUVO.exe", CRunFolder::Path("site.ini"));
    for (int i = 0; i < 600 && !HasTakenTrip(); ++i)
        Sleep(50);
    ask(program.Id());
    return program.Wait(kPatience);
}

void CheckRequestsToEnd() {
    const auto kill = [](const std::string& options) {
        return [=](DWORD processId) {
            std::system(("taskkill " + options + "/PID " + std::to_string(processId)).c_str());
        };
    };
    const auto message = [](UINT number, LPARAM parameter) {
        return [=](DWORD processId) {
            for (const HWND window : WindowsOf(processId))
                SendMessageA(window, number, 0, parameter);
        };
    };
    const std::pair<std::string, std::function<void(DWORD)>> cases[] = {
        {"a close request", message(WM_CLOSE, 0)},
        {"the end of the session", message(WM_QUERYENDSESSION, ENDSESSION_LOGOFF)},
        {"a close request", kill("")}};
    const std::string endless = kTrip + "[relay.generate]\ncount = 3\nseed = 1\nendless = true\n";
    for (const auto& [word, ask] : cases) {
        const CRunFolder run(kLink + Relay("serial = 5", endless), "", "[RUVO_SERIAL]\nRV001=5\nRV002=6\n");
        Equal(EndRun(ask), 0, word + ": exit status");
        const std::string log = run.Log();
        Expect(log.starts_with("This visit has taken ") &&
                   log.ends_with("\nRun ended by " + word + "; 1 relay not visited.\n"),
               word + ": log: " + log);
        Equal(run.Files().size(), std::size_t{1}, word + ": day files");
    }
    const CRunFolder run("", "", kSerial);
    run.Write("substation.toml",
              kLink + Relay("serial = 5", endless)); // no trace, which the server would keep
    EndRun(kill("/F "));
    Equal(run.Log(), "", "killed: log");
    run.Write("substation.toml", Plain());
    Equal(run.Run(), 0, "after the kill: exit status");
    const std::string log = run.Log();
    Expect(log.find(" of a visit that was ended ") != std::string::npos, "after the kill: log: " + log);
}

/// The server dies in the middle of a request: the run says so, and ends.
void CheckServerLost() {
    const CRunFolder run(kLink + Relay("serial = 5", kTrip) +
                             "[[fault]]\noperation = \"GetEvent\"\ndelay = 30000\n",
                         "", kSerial);
    const CProcess program("RUVO.exe", CRunFolder::Path("site.ini"));
    // The trace tells of a call when it has ended. This is the one before the first event is asked for.
    const auto isUnderWay = [] {
        return FileBytes(CRunFolder::Path("trace.txt")).find("GetDeviceStatus") != std::string::npos;
    };
    for (int i = 0; i < 400 && !isUnderWay(); ++i)
        Sleep(50);
    Sleep(500);
    Expect(KillServer() == 1, "the server was there to be ended");
    Equal(program.Wait(20000), 0, "the run ends without its server");
    Expect(run.Log().starts_with("A problem occured during events extraction. " + kSerialDetails),
           "the loss is logged: " + run.Log());
}

} // namespace

int CheckPrograms() {
    const bool outOfProcess = std::filesystem::exists(CodeFolder() + "\\" + kServerProgram);
    if (outOfProcess)
        RegisterServer();
    CheckSharedCases();
    CheckOnlyMode();
    CheckSecondInstance();
    CheckRegistryDestination();
    CheckDebuggerLines();
    CheckLibrary();
    CheckCompanion();
    CheckRecover();
    CheckRequestsToEnd();
    if (outOfProcess) {
        CheckServerLost(); // the last: Wine goes on offering a server that was killed until the session ends
    }
    return Finish();
}

} // namespace ruvo::test

int main() {
    return ruvo::test::CheckPrograms();
}
