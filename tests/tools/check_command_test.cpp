// ruvoctl check: the result code, and the lines of the file that it is about.
#include "support/scratch_folder.h"
#include "support/scripted_server.h"
#include "tools/run_tool.h"

#include "config/ini_keys.h"
#include "config/result_code.h"
#include "log/error_log.h"
#include "platform/environment.h"
#include "platform/files.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/stat.h>

namespace ruvo::test {
namespace {

/// Named by the message of its code. The file begins with two lines that name a good event root, except where
/// it has a general section itself. `want` is what stands below the message, without what is wanted at each
/// place.
struct SCase {
    int code;
    std::string ini;
    std::string want;
};

const std::string kSerial = "[RUVO_SERIAL]\nRV001=5\n";
const std::string kModem = "UseModem=1\nTAPI_ModemName=M\n";
const std::string kEthernet = "UseEthernet=1\n[RUVO_ETHERNET]\n";
const std::string kPasswords = "[RUVO_PASSWORDS]\nRV001=6426392349950675645036\n";

const SCase kCases[] = {
    {0, kSerial + kPasswords, ""},
    {4, "", "ini\nini: No such file or directory\n"},
    {4, "a=b\n", "ini\nini: no section begins in it\n"},
    {6, "ErrorLogPathname=C:\\proc\\n\\l\n" + kSerial, "ini:3: ErrorLogPathname=C:\\proc\\n\\l\n"},
    {7, kSerial,
     "ini\nini: /none/p32ls.so: cannot open shared object file: No such file or directory (named in "
     "@/server)\n"},
    {12, "BaudRate=960\n" + kSerial, "ini:3: BaudRate=960\n"},
    {13, "ElevenBits=2\n", "ini:3: ElevenBits=2\n"},
    {14, "BusyHoldoff=abc\n", "ini:3: BusyHoldoff=abc\n"},
    {15, "busycount=65536\n", "ini:3: busycount=65536\n"},
    {16, "ResetResponse=-1\n", "ini:3: ResetResponse=-1\n"},
    {17, "Response=x\n", "ini:3: Response=x\n"},
    {18, "TryCount=03\n", "ini:3: TryCount=03\n"},
    {19, "TransmitDelay=x\n", "ini:3: TransmitDelay=x\n"},
    {20, "GlobalTransmit=x\n", "ini:3: GlobalTransmit=x\n"},
    {21, "UseModem=2\n", "ini:3: UseModem=2\n"},
    {22, kModem + "TAPI_UseCountryAndAreaCodes=2\n", "ini:5: TAPI_UseCountryAndAreaCodes=2\n"},
    {23, "UseEthernet=yes\nUseEthernet=0\n", "ini:3: UseEthernet=yes\n"},
    {24, kEthernet, "ini:4: no entry in [RUVO_ETHERNET]\n"},
    {25, "", "ini: no entry, nor a section [RUVO_SERIAL]\n"},
    {25, "[RUVO_SERIAL]\nRV001=x\n", "ini:4: RV001=x\nini:4: warning: RV001: passed over\n"},
    {0, kSerial + "RV002=\nRV003=07\n[RUVO_MODEM]\nRV004\n",
     "ini:5: warning: RV002: passed over\nini:6: warning: RV003: passed over\nini:8: warning: RV004: passed "
     "over\n"},
    {25, "[RUVO_SERIAL\nRV001=5\n",
     "ini: no entry, nor a section [RUVO_SERIAL]\nini:3: warning: [RUVO_SERIAL: begins no section\n"
     "ini:4: warning: RV001: no key of [RUVO_GENERAL], not read\n"},
    {0,
     kSerial +
         "RV002=5\n[RUVO_MODEM]\nRV003=5\nRV004=6\n[RUVO_ETHERNET]\nRV005=1.1.1.1,5\nRV006=1.1.1.1,5,2\n"
         "RV007=1.1.1.1,5\n",
     "ini:5: warning: RV002: the address of RV001 in line 4; the relay is visited twice\n"
     "ini:12: warning: RV007: the address of RV005 in line 10; the relay is visited twice\n"},
    {26, "[RUVO_SERIAL]\nRV009=0\nRV002=255\nRV003=5\n", "ini:5: RV002=255\nini:4: RV009=0\n"},
    {27, "[RUVO_GENERAL]\nEventRootDir=C:\\\n" + kSerial, "ini:2: EventRootDir=C:\\\n"},
    {28, kSerial, "ini\n"},
    {29, kEthernet + "RV001=10.0.0.256,1\n", "ini:5: RV001=10.0.0.256,1\n"},
    {30, kEthernet + "RV001=10.0.0.1,1,0\n", "ini:5: RV001=10.0.0.1,1,0\n"},
    {31, kEthernet + "RV001=10.0.0.1\n", "ini:5: RV001=10.0.0.1\n"},
    {32, kModem, "ini: no entry, nor a section [RUVO_MODEM]\n"},
    {33, kModem + "[RUVO_MODEM]\nRV001=999\n", "ini:6: RV001=999\n"},
    {34, "UseModem=1\n", "ini:1: no key TAPI_ModemName in [RUVO_GENERAL]\n"},
    {35, kEthernet + "RV001=b\nRV001=c\n",
     "ini:5: RV001=b: also in line 6\nini:6: RV001=c: also in line 5\n"},
    {36, kSerial + "rv001=6\n", "ini:4: RV001=5: also in line 5\nini:5: rv001=6: also in line 4\n"},
    {37, kModem + "[RUVO_MODEM]\nRV001=5\nRV001=6\n",
     "ini:6: RV001=5: also in line 7\nini:7: RV001=6: also in line 6\n"},
    {38, kSerial + kPasswords + kPasswords.substr(17), // a password is told by its line alone
     "ini:6: RV001=...: also in line 7\nini:7: RV001=...: also in line 6\n"},
    {0,
     "BaudRates=9600\n;BaudRate=1\n" + kSerial + "RV2=7\n" + kPasswords.substr(0, 17) +
         "RV001=secret\nRV004" + kPasswords.substr(22) +
         "[ruvo_serial]\nRV003=4\n[RUVO_SERIALS]\nRV001=1\n[Other]\nx=1\n",
     "ini:3: warning: BaudRates: no key of [RUVO_GENERAL], not read\nini:7: warning: RV2: not read\n"
     "ini:9: warning: RV001: no scrambled password\n"
     "ini:10: warning: RV004: a password for a relay that no section lists\n"
     "ini:11: warning: [ruvo_serial]: a second section of this name is never read\n"
     "ini:13: warning: [RUVO_SERIALS]: a section of this name is not read\n"},
};

} // namespace

TEST(CheckCommand, EachResultCodeNamesItsLines) {
    const CScratchFolder folder;
    CScriptedServer server;
    folder.Write("registry.ini", "[SOFTWARE\\Halvex\\Norvo Q7 Studio]\nQ7SecurityLogs=C:\\proc\\none\n");
    folder.Write("server",
                 "[CLSID\\{9A69E99F-E86F-455D-B971-355C1139963E}]\nInprocServer32=/none/p32ls.dll\n");
    const std::string before = CurrentFolder();
    for (const SCase& row : kCases) {
        SCOPED_TRACE(row.ini);
        const std::string path = folder.Native("file.ini");
        const bool hasRoot = row.ini.starts_with("[RUVO_GENERAL]") || row.code == 4;
        if (!row.ini.empty() || row.code != 4)
            folder.Write("file.ini",
                         (hasRoot ? "" : "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("events") + "\n") +
                             row.ini);
        else
            std::filesystem::remove(path);
        chmod(path.c_str(), 0600);
        setenv("RUVO_REGISTRY_USER", folder.Native(row.code == 7 ? "server" : "none").c_str(), 1);
        setenv("RUVO_REGISTRY_MACHINE", folder.Native(row.code == 28 ? "registry.ini" : "none").c_str(), 1);
        server.refuseConnection = row.code == 7;
        const SOutcome outcome = RunTool({"check", path});
        std::string text;
        std::istringstream lines(outcome.out);
        for (std::string line; std::getline(lines, line); text += line + "\n") {
            line.replace(0, line.starts_with(path) ? path.size() : 0, line.starts_with(path) ? "ini" : "");
            if (const std::size_t at = line.find(folder.Native()); at != std::string::npos)
                line.replace(at, folder.Native().size(), "@");
            const std::size_t want = std::min(line.find(" want "), line.find(" the registry value"));
            line.erase(want == std::string::npos ? line.size() : want - 1); // and the mark before it
        }
        EXPECT_EQ(outcome.status, row.code);
        EXPECT_EQ(text, std::string(ResultMessage(static_cast<EResultCode>(row.code))) + "\n" + row.want);
        EXPECT_EQ(outcome.out.find("960: want 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200\n") !=
                      std::string::npos,
                  row.code == 12);
        EXPECT_EQ(CurrentFolder(), before);
    }
    folder.Write("file.ini",
                 "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("e") + "\n" + kSerial + kPasswords);
    const std::pair<unsigned, unsigned> modes[] = {{0600, 0755}, {0640, 0755}, {0644, 0755}, {0644, 0750}};
    for (const auto& [mode, folderMode] : modes) {
        chmod(folder.Native("file.ini").c_str(), mode);
        chmod(folder.Native().c_str(), folderMode);
        const SOutcome outcome = RunTool({"check", folder.Native("file.ini")});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out.find("\"chmod 600\"") != std::string::npos, mode + folderMode == 0644 + 0755)
            << outcome.out;
    }
}

TEST(CheckCommand, EveryKeyThatIsReadIsKnown) {
    const CScratchFolder folder;
    CScriptedServer server;
    std::string ini = kSerial + "[RUVO_GENERAL]\n";
    for (const SGeneralKey& key : kGeneralKeys)
        ini += std::string(key.name) + "=" +
               (key.rule == EKeyRule::EventRoot ? folder.Path("e") : std::string(key.defaultText)) + "\n";
    folder.Write("file.ini", ini);
    chmod(folder.Native("file.ini").c_str(), 0600);
    const SOutcome outcome = RunTool({"check", folder.Native("file.ini")});
    EXPECT_EQ(outcome.out, std::string(ResultMessage(EResultCode::Success)) + "\n");
    const SOutcome made = RunTool({"new", folder.Native("new.ini"), "--link", "serial", "--relay", "5"});
    EXPECT_EQ(made.status, 0) << made.error;
    EXPECT_EQ(RunTool({"check", folder.Native("new.ini")}).out, outcome.out);
}

TEST(CheckCommand, NamesTheLinksThatARunWouldRefuse) {
    const CScratchFolder folder;
    CScriptedServer server;
    setenv("RUVO_REGISTRY_USER", folder.Native("none").c_str(), 1);
    setenv("RUVO_REGISTRY_MACHINE", folder.Native("none").c_str(), 1);
    const std::string ini = folder.Native("file.ini");
    folder.Write("file.ini", "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("root") + "\n" + kSerial);
    ASSERT_EQ(std::system(("cd " + folder.Native() +
                           " && mkdir -p moved real/A real/B && ln -s real root && : > real/A/a.evt && "
                           "ln -s a.evt real/A/b.evt && mkfifo real/A/c.evt && ln -s none real/A/notes && "
                           "ln -s ../moved real/C && ln -s none real/D && ln -s A/a.evt real/e")
                              .c_str()),
              0);
    const SOutcome outcome = RunTool({"check", ini});
    EXPECT_EQ(outcome.status, 0);
    std::string names;
    std::istringstream lines(outcome.out);
    const std::string start = ini + ": warning: " + folder.Native("root/");
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(start))
            names += line.substr(start.size(), line.find(':', start.size()) - start.size()) + "\n";
    }
    EXPECT_EQ(names,
              "A/b.evt is not a regular file\nA/c.evt is not a regular file\nC is a link\nD is a link\n")
        << outcome.out;
}

// A file beside the INI file may decide which libraries are loaded.
TEST(CheckCommand, TakesTheSitesEnvironmentFromItsOwnerAlone) {
    const CScratchFolder folder;
    CScriptedServer server;
    folder.Write("a.ini", "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("e") + "\n" + kSerial);
    folder.Write(
        "a.env",
        "# of the server\n\nRUVO_TEST_A= b=\"c\" \n1A=x\nRUVO_LOCK_DIR=x\nnone\nLD_X=1\nRUVO_TEST_B=");
    const std::string path = folder.Native("a.env");
    const auto check = [&] {
        for (const char* name : {"RUVO_TEST_A", "LD_X"})
            unsetenv(name);
        const SOutcome checked = RunTool({"check", folder.Native("a.ini")});
        const SOutcome tested = RunTool({"test", folder.Native("a.ini"), "RV001"});
        EXPECT_EQ(checked.status, 0);
        EXPECT_EQ(checked.out.find("a.env") == std::string::npos,
                  tested.error.find("a.env") == std::string::npos);
        return EnvironmentValue("RUVO_TEST_A").value_or("none") + checked.out;
    };
    chmod(path.c_str(), 0640);
    const std::string refused = ": warning: no NAME=value that may stand here; not taken\n";
    std::string said = " b=\"c\" " + std::string(ResultMessage(EResultCode::Success)) + "\n";
    for (const char* line : {":4", ":5", ":6"})
        said += path + line + refused;
    EXPECT_TRUE(check().starts_with(said + path + ":7: warning: LD_X; the system's loader")) << check();
    EXPECT_NE(EnvironmentValue("RUVO_LOCK_DIR"), "x");
    chmod(path.c_str(), 0660);
    EXPECT_NE(check().find("a.env: warning: not taken: another user may have written it"), std::string::npos);
    setenv("RUVO_SITE", "a", 1); // run-site has read it
    EXPECT_EQ(check(), "none" + std::string(ResultMessage(EResultCode::Success)) + "\n");
    unsetenv("RUVO_SITE");
    ResetErrorLog();
}

} // namespace ruvo::test
