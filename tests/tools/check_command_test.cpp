// ruvoctl check: the result code, and the lines of the file that it is about.
#include "support/case_table.h"
#include "support/scratch_folder.h"
#include "support/scripted_server.h"
#include "tools/ini/place_warnings.h"
#include "tools/run_tool.h"

#include "config/ini_keys.h"
#include "config/result_messages.h"
#include "log/error_log.h"
#include "platform/environment.h"
#include "platform/files.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/stat.h>

namespace ruvo::test {
namespace {

const std::string kSerial = "[RUVO_SERIAL]\nRV001=5\n";
const std::string kPasswords = "[RUVO_PASSWORDS]\nRV001=6426392349950675645036\n";

} // namespace

TEST(CheckCommand, EachResultCodeNamesItsLines) {
    const CScratchFolder folder;
    CScriptedServer server;
    folder.Write("registry.ini", "[SOFTWARE\\Halvex\\Norvo Q7 Studio]\nQ7SecurityLogs=C:\\proc\\none\n");
    folder.Write("server",
                 "[CLSID\\{9A69E99F-E86F-455D-B971-355C1139963E}]\nInprocServer32=/none/p32ls.dll\n");
    const std::string before = CurrentFolder();
    ForEachCase<3>("tools/check_cases.txt", [&](auto& codeText, auto& ini, auto& want) {
        const int code = std::stoi(codeText);
        const std::string path = folder.Native("file.ini");
        const bool hasRoot = ini.starts_with("[RUVO_GENERAL]") || code == 4;
        if (!ini.empty() || code != 4)
            folder.Write("file.ini",
                         (hasRoot ? "" : "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("events") + "\n") +
                             ini);
        else
            std::filesystem::remove(path);
        chmod(path.c_str(), 0600);
        setenv("RUVO_REGISTRY_USER", folder.Native(code == 7 ? "server" : "none").c_str(), 1);
        setenv("RUVO_REGISTRY_MACHINE", folder.Native(code == 28 ? "registry.ini" : "none").c_str(), 1);
        server.refuseConnection = code == 7;
        const SOutcome outcome = RunTool({"check", path});
        std::string text;
        std::istringstream lines(outcome.out);
        for (std::string line; std::getline(lines, line); text += line + "\n") {
            line.replace(0, line.starts_with(path) ? path.size() : 0, line.starts_with(path) ? "ini" : "");
            line = Replaced(line, folder.Native(), "@");
            const std::size_t wanted = std::min(line.find(" expected "), line.find(" the registry value"));
            line.erase(wanted == std::string::npos ? line.size() : wanted - 1); // and the mark before it
        }
        EXPECT_EQ(outcome.status, code);
        EXPECT_EQ(text, std::string(ResultMessage(static_cast<EResultCode>(code))) + "\n" + want);
        const char* const rates = "960: expected 1200, 2400, 4800, 9600, 19200, 38400, 57600 or 115200\n";
        EXPECT_EQ(bool(Contains(outcome.out, rates)), code == 12);
        EXPECT_EQ(CurrentFolder(), before);
    });
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
               (key.rule == EKeyRule::EventRoot  ? folder.Path("e")
                : key.rule == EKeyRule::ErrorLog ? folder.Path("log")
                                                 : std::string(key.defaultText)) +
               "\n";
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
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(start))
            names += line.substr(start.size(), line.find(':', start.size()) - start.size()) + "\n";
    EXPECT_EQ(
        names,
        "A/b.evt is not a regular file\nA/c.evt is not a regular file\nC is a symbolic link\nD is a symbolic link\n")
        << outcome.out;
}

TEST(CheckCommand, WarnsOfPlacesThatARunCannotUse) {
    const CScratchFolder folder;
    CScriptedServer server;
    folder.Write("a.ini", "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("e") + "\n" + kSerial);
    folder.Write("file", "");
    std::filesystem::create_directory(folder.Native("of-all"));
    chmod(folder.Native("of-all").c_str(), 0777);
    const std::pair<const char*, bool> states[] = {
        {"none/deeper", false}, {".", false}, {"file", true}, {"file/x", true}, {"of-all", true}};
    for (const auto& [name, isWarned] : states) {
        setenv("RUVO_STATE_DIR", folder.Native(name).c_str(), 1);
        const SOutcome outcome = RunTool({"check", folder.Native("a.ini")});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(bool(Contains(outcome.out, "cannot be used; a run could make no journal")), isWarned)
            << name << ": " << outcome.out;
    }
    EXPECT_FALSE(folder.Has("none")) << "nothing is made to find out";
    setenv("RUVO_STATE_DIR", "/s", 1);
    const std::pair<SFreeSpace, std::string> rows[] = {
        // what is said of each of the three disks
        {{}, ""}, // the system does not say
        {{65536, 2}, ""},
        {{65535, 2}, " is full; "},
        {{65536, 1}, " can take no more files; "},
    };
    for (const auto& [room, want] : rows) {
        std::string text;
        for (const SDiagnostic& found :
             FindFullDisks("C:\\e", "C:\\l\\x.log", [&given = room](const std::string&) { return given; }))
            text += found.text + "\n";
        EXPECT_EQ(text, want.empty()
                            ? ""
                            : "the disk of /e" + want + "the relays keep their events\n" +
                                  "the disk of /l/x.log" + want + "lines of the error log would be lost\n" +
                                  "the disk of /s" + want + "a run could make no journal\n");
    }
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
        EXPECT_EQ(bool(Contains(checked.out, "a.env")), bool(Contains(tested.error, "a.env")));
        return EnvironmentValue("RUVO_TEST_A").value_or("none") + checked.out;
    };
    chmod(path.c_str(), 0640);
    const std::string refused = ": warning: ignored; expected NAME=value with a permitted name\n";
    std::string said = " b=\"c\" " + std::string(ResultMessage(EResultCode::Success)) + "\n";
    for (const char* line : {":4", ":5", ":6"})
        said += path + line + refused;
    EXPECT_TRUE(check().starts_with(said + path + ":7: warning: LD_X: takes effect only")) << check();
    EXPECT_NE(EnvironmentValue("RUVO_LOCK_DIR"), "x");
    chmod(path.c_str(), 0660);
    EXPECT_TRUE(Contains(check(), "a.env: warning: ignored, because another user may have written it"));
    setenv("RUVO_SITE", "a", 1); // run-site has read it
    EXPECT_EQ(check(), "none" + std::string(ResultMessage(EResultCode::Success)) + "\n");
    ResetErrorLog();
}

} // namespace ruvo::test
