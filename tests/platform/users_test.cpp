// Root continues as another user, and follows nobody else's files on the way.
#include "platform/child_process.h"
#include "platform/environment.h"
#include "platform/file_replacement.h"
#include "platform/file_trust.h"
#include "platform/state_folder.h"
#include "platform/system_calls.h"
#include "platform/users.h"
#include "support/contains.h"
#include "support/scratch_folder.h"

#include <cerrno>
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ruvo {

namespace {

void SayWhoThisIs() {
    std::cout << "as " << getuid() << geteuid() << " groups " << getgroups(0, nullptr) << " in "
              << std::filesystem::current_path().string() << " home " << getenv("HOME") << " secret "
              << (getenv("SECRET") != nullptr) << "\n";
    for (char** variable = environ; *variable != nullptr; ++variable)
        std::cout << *variable << "|";
    std::cout << "\ncalled " << program_invocation_name << "\n";
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        std::cout << (line.starts_with("Cap") ? line + "\n" : "");
}

/// What comes from a child process, which has to continue as somebody else.
std::string SaidByChild(const std::function<void()>& become) {
    const CScratchFolder folder;
    const int out = open(folder.Native("out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    EXPECT_EQ(RunInChild([&] { return dup2(out, STDOUT_FILENO), become(), 9; }), 0);
    close(out);
    return folder.Read("out");
}

} // namespace

TEST(Users, ContinuesWithNothingOfRoot) {
    const auto nobody = FindUser("nobody");
    if (!IsRoot() || !nobody) {
        SayWhoThisIs(); // also when this program has been started anew by the lines below
        GTEST_SKIP() << "only root can become another user";
    }
    const std::string said = SaidByChild([&] {
        const gid_t more[] = {0, 1};
        setgroups(2, more);
        setenv("SECRET", "1", 1);
        for (const char* const kept : {"TERM", "COLUMNS", "JOURNAL_STREAM"})
            setenv(kept, "kept", 1);
        ContinueAs(*nobody, {"--gtest_filter=Users.Continues*"});
    });
    const std::string id = std::to_string(nobody->id);
    EXPECT_TRUE(test::Contains(said, "as " + id + id + " "));
    EXPECT_TRUE(test::Contains(said, " groups 1 in / home /nonexistent secret 0\n"));
    EXPECT_TRUE(
        test::Contains(said, "\nPATH=/usr/local/bin:/usr/bin:/bin|HOME=/nonexistent|SHELL=/usr/sbin/nologin|"
                             "USER=nobody|LOGNAME=nobody|TERM=kept|COLUMNS=kept|JOURNAL_STREAM=kept|\n"));
    for (const char* const set : {"CapInh", "CapPrm", "CapEff", "CapAmb"})
        EXPECT_TRUE(test::Contains(said, std::string(set) + ":\t0000000000000000\n")) << set;
    EXPECT_EQ(ContinueAs({4'000'000'000, ""}, {}), "user 4000000000 is not known on this machine");
}

TEST(Users, ContinueAsTheListOfUsersHasThem) {
    if (EnvironmentValue("TERM") == "kept")
        return SayWhoThisIs(); // started anew by the lines below
    const std::string said = SaidByChild([] {
        test::g_home = "/home/v";
        test::g_mayBecomeAnyone = true;
        for (const char* const name : {"SECRET", "TERM", "COLUMNS", "JOURNAL_STREAM"})
            setenv(name, "kept", 1);
        test::g_error = EPERM;
        for (const char* const call : {"initgroups", "setresgid", "setresuid"}) {
            test::g_refused = call;
            dprintf(STDOUT_FILENO, "%s\n", ContinueAs({5, ""}, {}).c_str());
        }
        test::g_refused = "";
        dprintf(STDOUT_FILENO, "%s\n", ContinueAs({5, ""}, {std::string(200'000, 'x')}).c_str());
        ContinueAs({5, ""}, {"--gtest_filter=Users.ContinueAs*"});
    });
    const std::string refused = "its permissions cannot be taken: Operation not permitted\n";
    const std::string groups = "initgroups visitor 77 0 0|", all = groups + "setresgid  77 77 77|";
    EXPECT_TRUE(said.starts_with("its groups cannot be taken: Operation not permitted\n" + groups + refused +
                                 all + refused + all +
                                 "setresuid  5 5 5|the program cannot be started: Argument list too long\n"))
        << said;
    EXPECT_TRUE(
        test::Contains(said, " in / home /home/v secret 0\nPATH=/usr/local/bin:/usr/bin:/bin|HOME=/home/v|"
                             "SHELL=/bin/sh|USER=visitor|LOGNAME=visitor|TERM=kept|COLUMNS=kept|"
                             "JOURNAL_STREAM=kept|\ncalled " +
                                 std::filesystem::read_symlink("/proc/self/exe").string() + "\n"));
}

TEST(Users, HaveTheirStateBelowTheirHome) {
    EXPECT_TRUE(HoldsInChild([] {
        unsetenv("RUVO_STATE_DIR"), unsetenv("XDG_STATE_HOME"), setenv("HOME", "/h", 1);
        std::string seen;
        for (const char* const home : {"/home/v", "relative", ""}) {
            test::g_home = home;
            seen += CurrentUser().name + OwnerOf("C:\\")->name + StateFolder() + " ";
        }
        unsetenv("HOME");
        seen += StateFolder() + " ";
        setenv("XDG_STATE_HOME", "relative", 1); // and so no place to look
        seen += StateFolder() + " ";
        setenv("RUVO_STATE_DIR", "/named", 1);
        return StateFoldersToRead() == std::vector<std::string>{"C:\\named"} &&
               seen + StateFolder() == "visitorvisitorC:\\home\\v\\.local\\state\\ruvo "
                                       "visitorvisitorC:\\h\\.local\\state\\ruvo "
                                       "C:\\h\\.local\\state\\ruvo "
                                       "C:\\nonexistent\\.local\\state\\ruvo "
                                       "C:\\nonexistent\\.local\\state\\ruvo C:\\named";
    }));
    EXPECT_TRUE(FindUser("root")->id == 0 && !FindUser("no such user") && IsRoot() == (getuid() == 0));
}

TEST(Users, OnlyAFileThatNobodyElseCanWriteIsTrusted) {
    const CScratchFolder folder;
    const std::string largest(std::size_t{64} * 1024, 'x');
    folder.Write("empty", "");
    folder.Write("largest", largest);
    folder.Write("larger", largest + "x");
    folder.Write("lax", "x");
    chmod(folder.Native("lax").c_str(), 0620);
    mkfifo(folder.Native("pipe").c_str(), 0600);
    std::filesystem::create_symlink("largest", folder.Native("link"));
    std::filesystem::create_symlink("round", folder.Native("round"));
    using enum ETrustedRead;
    const std::pair<const char*, ETrustedRead> rows[] = {
        {"empty", Read},        {"largest", Read},       {"link", Read},       {"larger", Unreadable},
        {"none", Missing},      {"lax", Untrusted},      {"pipe", Unreadable}, {"round", Untrusted},
        {"none/deep", Missing}, {"empty/x", Unreadable}, {"", Unreadable}};
    for (const auto& [name, want] : rows) {
        std::string bytes = "before";
        EXPECT_EQ(ReadTrustedFile(folder.Path(name), bytes), want) << name;
        EXPECT_TRUE(want != Read || bytes == folder.Read(name)) << name;
    }
    std::string bytes;
    errno = 0;
    EXPECT_EQ(ReadTrustedFile("D:\\x", bytes), Missing);
    EXPECT_FALSE(IsReadableByEveryone("D:\\x") || IsReadableByEveryone(folder.Path("none")));
    EXPECT_STREQ(TrustedUsers(), "root");
    EXPECT_STREQ(HowToRestrict(),
                 "\"chmod 600\" restricts it to its owner, \"chmod 640\" to its owner and group");
}

TEST(Users, KnowsWhoCanDecideWhereAPathLeads) {
    const CScratchFolder folder;
    const auto user = static_cast<std::uint32_t>(getuid());
    for (const char* const file : {"own/in/file", "own/lax", "open/file", "sticky/file"})
        folder.Write(file, "");
    chmod(folder.Native("own/lax").c_str(), 0664);
    chmod(folder.Native("open").c_str(), 0777);
    chmod(folder.Native("sticky").c_str(), 01777);
    std::filesystem::create_symlink("../open/file", folder.Native("own/astray"));
    std::filesystem::create_symlink("in", folder.Native("own/link"));
    std::filesystem::create_symlink("round", folder.Native("own/round"));
    const std::pair<const char*, bool> rows[] = {
        {"own/in/file", true},   {"own/in/new", true},     {"own/none/new", true}, {"own/lax", false},
        {"open/file", false},    {"open/none/new", false}, {"sticky/file", true},  {"sticky/new", false},
        {"own/link/file", true}, {"own/astray", false},    {"own/round", false}};
    for (const auto& [name, isGuarded] : rows)
        EXPECT_EQ(IsGuarded(folder.Path(name), user), isGuarded) << name;
    for (int link = 1; link <= 41; ++link) // as many as the system follows, and one more
        std::filesystem::create_symlink(link == 1 ? "own/in/file" : std::to_string(link - 1),
                                        folder.Native(std::to_string(link)));
    EXPECT_FALSE(MakePrivateFolder(folder.Path("own\\in\\file")));
    EXPECT_TRUE(IsGuarded(folder.Path("40"), user) && CheckReplaceable(folder.Path("40")).Good());
    EXPECT_FALSE(IsGuarded(folder.Path("41"), user) || CheckReplaceable(folder.Path("41")).Good());
    EXPECT_EQ(OwnerOf(folder.Path("own/none/below"))->id, user);
    if (user == 0) {
        EXPECT_TRUE(chown(folder.Native("own/in/file").c_str(), 65534, 0) == 0 &&
                    chown(folder.Native("own/in").c_str(), 65534, 0) == 0);
        EXPECT_TRUE(IsGuarded(folder.Path("own/in/file"), 65534));
        EXPECT_FALSE(IsGuarded(folder.Path("own/in/file"), user)) << "another's";
        EXPECT_EQ(OwnerOf(folder.Path("own/in/new"))->id, 65534U);
    }
}

} // namespace ruvo
