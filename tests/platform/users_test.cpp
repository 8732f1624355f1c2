// Root continues as another user, and follows nobody else's files on the way.
#include "platform/child_process.h"
#include "platform/file_trust.h"
#include "platform/users.h"
#include "support/scratch_folder.h"

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
    std::cout << "\n";
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        std::cout << (line.starts_with("Cap") ? line + "\n" : "");
}

} // namespace

TEST(Users, ContinuesWithNothingOfRoot) {
    const auto nobody = FindUser("nobody");
    if (!IsRoot() || !nobody) {
        SayWhoThisIs(); // also when this program has been started anew by the lines below
        GTEST_SKIP() << "only root can become another user";
    }
    const CScratchFolder folder;
    const int out = open(folder.Native("out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    EXPECT_EQ(RunInChild([&] {
                  const gid_t more[] = {0, 1};
                  setgroups(2, more);
                  setenv("SECRET", "1", 1);
                  for (const char* const kept : {"TERM", "COLUMNS", "JOURNAL_STREAM"})
                      setenv(kept, "kept", 1);
                  dup2(out, STDOUT_FILENO);
                  ContinueAs(*nobody, {"--gtest_filter=Users.Continues*"});
                  return 9;
              }),
              0);
    close(out);
    const std::string said = folder.Read("out");
    const std::string id = std::to_string(nobody->id);
    EXPECT_NE(said.find("as " + id + id + " "), std::string::npos) << said;
    EXPECT_NE(said.find(" groups 1 in / home /nonexistent secret 0\n"), std::string::npos) << said;
    EXPECT_NE(said.find("\nPATH=/usr/local/bin:/usr/bin:/bin|HOME=/nonexistent|SHELL=/usr/sbin/nologin|"
                        "USER=nobody|LOGNAME=nobody|TERM=kept|COLUMNS=kept|JOURNAL_STREAM=kept|\n"),
              std::string::npos)
        << said;
    for (const char* const set : {"CapInh", "CapPrm", "CapEff", "CapAmb"})
        EXPECT_NE(said.find(std::string(set) + ":\t0000000000000000\n"), std::string::npos) << set << said;
    EXPECT_EQ(ContinueAs({4'000'000'000, ""}, {}), "user 4000000000 is not known on this machine");
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
    const struct {
        const char* name;
        ETrustedRead want;
    } rows[] = {{"empty", Read},        {"largest", Read},       {"link", Read},       {"larger", Unreadable},
                {"none", Missing},      {"lax", Untrusted},      {"pipe", Unreadable}, {"round", Untrusted},
                {"none/deep", Missing}, {"empty/x", Unreadable}, {"", Unreadable}};
    for (const auto& row : rows) {
        std::string bytes = "before";
        EXPECT_EQ(ReadTrustedFile(folder.Path(row.name), bytes), row.want) << row.name;
        EXPECT_TRUE(row.want != Read || bytes == folder.Read(row.name)) << row.name;
    }
    std::string bytes;
    EXPECT_EQ(ReadTrustedFile("D:\\x", bytes), Missing);
    EXPECT_STREQ(HowToRestrict(),
                 "\"chmod 600\" restricts it to its owner, \"chmod 640\" to its owner and group");
}

TEST(Users, KnowsWhoCanDecideWhereAPathLeads) {
    const CScratchFolder folder;
    const auto user = static_cast<std::uint32_t>(getuid());
    std::filesystem::create_directories(folder.Native("own/in"));
    std::filesystem::create_directory(folder.Native("open"));
    std::filesystem::create_directory(folder.Native("sticky"));
    for (const char* const file : {"own/in/file", "own/lax", "open/file", "sticky/file"})
        folder.Write(file, "");
    chmod(folder.Native("own/lax").c_str(), 0664);
    chmod(folder.Native("open").c_str(), 0777);
    chmod(folder.Native("sticky").c_str(), 01777);
    std::filesystem::create_symlink("../open/file", folder.Native("own/astray"));
    std::filesystem::create_symlink("in", folder.Native("own/link"));
    std::filesystem::create_symlink("round", folder.Native("own/round"));
    const struct {
        const char* name;
        bool isGuarded;
    } rows[] = {{"own/in/file", true}, {"own/in/new", true},  {"own/none/new", true},
                {"own/lax", false},    {"open/file", false},  {"open/none/new", false},
                {"sticky/file", true}, {"sticky/new", false}, {"own/link/file", true},
                {"own/astray", false}, {"own/round", false}};
    for (const auto& row : rows)
        EXPECT_EQ(IsGuarded(folder.Path(row.name), user), row.isGuarded) << row.name;
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
