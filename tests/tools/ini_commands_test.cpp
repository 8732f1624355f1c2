// The commands that make, list and edit INI files: what they write, what they refuse, and whose the file is.
#include "platform/child_process.h"
#include "support/case_table.h"
#include "support/scratch_folder.h"
#include "support/scripted_server.h"
#include "tools/run_tool.h"

#include "config/scramble.h"
#include "log/error_log.h"
#include "platform/file_replacement.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

namespace ruvo::test {
namespace {

const std::string kSite = "[RUVO_GENERAL]\r\nEventRootDir=C:\\x\r\n[RUVO_SERIAL]\r\nRV001=5\r\nRV003=7\r\n"
                          "[RUVO_ETHERNET]\r\nRV001=10.0.0.1,2\r\n[RUVO_PASSWORDS]\r\n"
                          "RV008=6426392349950675645036\r\n";

class IniCommands : public testing::Test {
protected:
    /// INI stands for the file.
    SOutcome Tool(const std::string& words, const std::string& input = "") const {
        return RunWords(words, "INI", m_file, input);
    }
    std::string Text() const { return m_folder.Read("site.ini"); }
    unsigned Mode() const {
        struct stat status {};
        return stat(m_file.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }
    std::string Stored(const std::string& key) const {
        char plain[9]{};
        const std::size_t at = Text().find(key + "=", Text().find("[RUVO_PASSWORDS]"));
        return at != std::string::npos && UnscramblePassword(Text().c_str() + at + 6, plain) == 0 ? plain
                                                                                                  : "-";
    }
    CScratchFolder m_folder;
    std::string m_file = m_folder.Native("site.ini");
};

} // namespace

TEST_F(IniCommands, EditOneEntryOrNothing) {
    ForEachCase<5>("tools/edits.txt", [this](auto& words, auto& input, auto& said, auto& before, auto& with) {
        m_folder.Write("site.ini", kSite);
        const SOutcome outcome = Tool(words, input);
        EXPECT_EQ(Text(), std::string(kSite).replace(kSite.find(before), before.size(), with));
        EXPECT_EQ(outcome.status == 0, !before.empty());
        EXPECT_EQ(outcome.error.empty(), !before.empty());
        EXPECT_TRUE(Contains(outcome.out + outcome.error, said));
        EXPECT_FALSE(Contains(outcome.out + outcome.error, "SECR"));
    });
}

TEST_F(IniCommands, EditPasswordsAndFullOrOddFiles) {
    m_folder.Write("site.ini", kSite);
    EXPECT_EQ(Tool("add INI 9 --password", " a=b;\"\n").status, 0);
    EXPECT_EQ(Tool("password set INI rv001", "PASSWORD\r\n").status, 0);
    EXPECT_EQ(Stored("RV009") + Stored("RV001"), " a=b;\"PASSWORD");
    EXPECT_TRUE(Contains(Tool("remove INI RV009").out, "its password was removed"));
    EXPECT_EQ(Tool("remove INI RV003").status, 0);
    EXPECT_EQ(Stored("RV009") + Stored("RV001"), "-PASSWORD");
    EXPECT_TRUE(Contains(Tool("remove INI RV001").error, "last relay"));
    m_folder.Write("site.ini", "[RUVO_GENERAL]\nEventRootDir=C:\\x\n[RUVO_SERIAL]\nRV001=5\nRV002=x\n");
    EXPECT_TRUE(Contains(Tool("remove INI RV001").error, "no longer pass check"));
    std::string full = "[RUVO_SERIAL]\n";
    for (int n = 1000; n < 2000; ++n)
        full += "RV" + std::to_string(n).substr(1) + "=\n";
    m_folder.Write("site.ini", full);
    EXPECT_TRUE(Contains(Tool("add INI 9").error, "RV000 to RV999"));
    EXPECT_EQ(Tool("remove INI RV999").status, 0); // it is no relay, and so not the last one
    full.resize(full.find("RV999"));
    EXPECT_EQ(Tool("add INI 9 --key RV000").status, 0); // it has no value, so it is free
    EXPECT_EQ(Text(), full.insert(full.find('=') + 1, "9"));
}

// Nor does a folder whose new files others may read open a replaced file to them.
TEST_F(IniCommands, ReplacementKeepsLinksPermissionsAndOwner) {
    const std::string list("\2\0\0\0\1\0\7\0\xFF\xFF\xFF\xFF\2\0\4\0\xFC\xFF\0\0\4\0\5\0\xFF\xFF\xFF\xFF"
                           "\20\0\7\0\xFF\xFF\xFF\xFF\40\0\0\0\xFF\xFF\xFF\xFF",
                           44);
    const bool isRoot = geteuid() == 0;
    m_folder.Write("site.ini", kSite);
    setxattr(m_folder.Native().c_str(), "system.posix_acl_default", list.data(), list.size(), 0);
    std::filesystem::create_directory(m_folder.Native("d"));
    std::filesystem::create_symlink("../site.ini", m_folder.Native("d/link"));
    EXPECT_TRUE(!isRoot || chown(m_file.c_str(), 65534, 65533) == 0);
    for (const unsigned mode : {0600U, 0640U, 0666U}) {
        chmod(m_file.c_str(), mode);
        const std::string address = std::to_string(mode % 250 + 1);
        EXPECT_EQ(Tool("add " + m_folder.Native("d/link") + " " + address).status, 0);
        EXPECT_EQ(Mode(), mode);
        EXPECT_EQ(getxattr(m_file.c_str(), "system.posix_acl_access", nullptr, 0), -1);
    }
    struct stat status {};
    EXPECT_EQ(stat(m_file.c_str(), &status), 0);
    EXPECT_TRUE(!isRoot || (status.st_uid == 65534 && status.st_gid == 65533));
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder.Native("d/link")));
    const group* const readers = getgrgid(65534);
    if (isRoot && readers != nullptr && chown(m_folder.Native().c_str(), 0, 65534) == 0) {
        EXPECT_TRUE(WriteNewPrivateFile(m_folder.Path("new"), "x", readers->gr_name).Good());
        EXPECT_EQ(stat(m_folder.Native("new").c_str(), &status), 0);
        EXPECT_TRUE(status.st_gid == 65534 && (status.st_mode & 07777U) == 0640U &&
                    m_folder.Read("new") == "x");
    }
    std::filesystem::create_hard_link(m_file, m_folder.Native("twin"));
    EXPECT_TRUE(Contains(Tool("password set INI RV001").error, "hard link"));
    std::filesystem::remove(m_folder.Native("twin"));
    EXPECT_TRUE(HoldsInChild([&] { // a user who may read the file and write the folder, but not the file
        const bool isOther = chmod(m_file.c_str(), 0444) == 0 &&
                             chmod(m_folder.Native().c_str(), 0777) == 0 && (!isRoot || seteuid(65532) == 0);
        return isOther && Contains(Tool("add INI 99").error, "no permission to write");
    }));
    EXPECT_FALSE(Contains(Text(), "=99"));
    for (const auto& entry : std::filesystem::directory_iterator(m_folder.Native()))
        EXPECT_NE(entry.path().extension(), ".tmp") << entry.path(); // nothing is left beside it
}

// Another user who may write the folder puts links in the new file's place, in time for each step.
TEST_F(IniCommands, ReplacementIsNotRedirectedToAnotherFile) {
    m_folder.Write("victim", "v");
    m_folder.Write("site.ini", "old");
    const auto swapNew = [&] {
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.Native()))
            EXPECT_FALSE(entry.path().extension() == ".tmp" && unlink(entry.path().c_str()) == 0 &&
                         symlink("victim", entry.path().c_str()) != 0);
    };
    std::jthread attacker([&](const std::stop_token& stop) {
        while (!stop.stop_requested())
            swapNew();
    });
    for (int round = 0; round < 100; ++round)
        static_cast<void>(CSecretFileReplacement().Prepare(m_folder.Path("site.ini"), "new"));
    attacker = {};
    CSecretFileReplacement replacement;
    EXPECT_TRUE(replacement.Prepare(m_folder.Path("site.ini"), "new").Good());
    swapNew();
    EXPECT_EQ(replacement.Commit("old").failure, EAccessFailure::NotReplaced);
    EXPECT_EQ(m_folder.Read("victim") + Text(), "vold");
}

TEST_F(IniCommands, EditsAtOnceAreAllThereOrRefused) {
    m_folder.Write("site.ini", kSite);
    m_folder.Write(".site.ini.abcdef.tmp", "of an edit that was killed");
    m_folder.Write(".site.ini.ABCDEF.tmp", "of somebody else");
    pid_t children[8]{};
    for (pid_t& child : children)
        if (child = fork(); child == 0)
            _exit(Tool("add INI 10" + std::to_string(&child - children)).status);
    std::ptrdiff_t good = 0;
    for (int status = -1; const pid_t child : children)
        good += waitpid(child, &status, 0) == child && status == 0;
    EXPECT_TRUE(good > 0 && std::ranges::count(Text(), '\n') == std::ranges::count(kSite, '\n') + good);
    EXPECT_TRUE(!m_folder.Has(".site.ini.abcdef.tmp") && m_folder.Has(".site.ini.ABCDEF.tmp"));
}

TEST_F(IniCommands, NewMakesAFileThatPassesCheck) {
    CScriptedServer server;
    const std::string make = "new INI --events INI.events --log INI.log --link ";
    const std::string rows[][3] = {
        {"serial --relay 5 --relay RV009=6 --relay 7 --baud 1200", "", "RV010  serial  7        none\n"},
        {"modem --relay 5 --modem M --passwords", "PASSWORD\n", "RV001  modem  5        stored\n"},
        {"ethernet --relay 10.0.0.1,2,3 --relay 10.0.0.1,2 --passwords", "\nA\n", "10.0.0.1,2    stored\n"},
    };
    for (const auto& [words, input, listed] : rows) {
        const mode_t mask = umask(0);
        EXPECT_EQ(Tool(make + words, input).error, "");
        umask(mask);
        EXPECT_EQ(Mode(), 0600U);
        EXPECT_EQ(Tool("check INI").out, "Success - No input errors found.\n");
        EXPECT_TRUE(Contains(Tool("list INI").out, listed));
        const std::string text = Text();
        EXPECT_EQ(Tool(make + words, input).status, 1); // it is there
        EXPECT_EQ(Text(), text);
        std::filesystem::remove(m_file);
    }
    for (const std::string words :
         {"serial", "serial --relay 5 --relay 5", "serial --relay 0", "modem --relay 5",
          "serial --relay 5 --modem M", "serial --relay 5 --log /proc/none/l", "serial --relay 5 --log x.INI",
          "serial --relay 5 --port \"COM1\"", "serial --relay 5 --passwords"}) {
        EXPECT_NE(Tool(make + words).status, 0) << words;
        EXPECT_FALSE(m_folder.Has("site.ini")) << words;
    }
    for (const auto& [options, said] :
         {std::pair("--log /proc/none/l", "open log"), {"--events /", "EventRoot"}})
        EXPECT_TRUE(
            Contains(Tool("new INI --link serial --relay 5 --passwords " + std::string(options)).error,
                     said)); // before a password is asked for
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder.Native()), {}), 0);
    m_folder.Write("site.ini", kSite + "RV001=0028289361231177046833\r\n"); // of an empty password
    const std::string json =
        R"("visited":false,"text":"10.0.0.1,2","valid":true,"ip":"10.0.0.1","device":2,)";
    EXPECT_TRUE(Contains(Tool("list --format json INI").out, json + R"("password":"none"})"));
    ResetErrorLog();
}

TEST_F(IniCommands, NewAsksAtATerminal) {
    int terminal = -1, status = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == -1) {
        GTEST_SKIP() << "this machine gives no pseudo-terminals";
    }
    if (child == 0) {
        setvbuf(stdin, nullptr, _IONBF, 0); // as the program does
        _exit(RunOn(std::cout, {"new", m_file}, true));
    }
    const char* const answers[] = {"serail", "serial", "",       "96", "1200", "", "12", "SECRIT",
                                   "SECRET", "SECRET", "SECRET", "12", "14",   "", "",   ""};
    std::string seen;
    std::size_t asked = 0;
    for (char c = 0; read(terminal, &c, 1) == 1;)
        if (seen += c; seen.ends_with(": ") && asked < std::size(answers))
            dprintf(terminal, "%s\n", answers[asked++]);
    EXPECT_TRUE(waitpid(child, &status, 0) == child && status == 0) << seen;
    EXPECT_LT(seen.find("do not match"), seen.rfind("Password of RV001")) << seen;
    EXPECT_FALSE(Contains(seen, "SECR"));
    EXPECT_TRUE(Contains(Text(), "BaudRate=1200\n"));
    EXPECT_TRUE(Contains(Text(), "RV001=12\nRV002=14\n"));
    EXPECT_EQ(Stored("RV001") + Stored("RV002"), "SECRET-");
    close(terminal);
}

} // namespace ruvo::test
