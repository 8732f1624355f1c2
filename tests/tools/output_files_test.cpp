// The files that report, status and archive write: whole ones, and nobody else's.
#include "support/scratch_folder.h"
#include "tools/day_files.h"
#include "tools/run_tool.h"

#include <algorithm>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ruvo::test {
namespace {

constexpr uid_t kOther = 65534;

class COutputFile : public testing::TestWithParam<std::vector<std::string>> {
protected:
    COutputFile() {
        std::filesystem::create_directories(m_folder.Native("real"));
        m_folder.Write("events/AB12-1-2026-11-16-DEV.evt", kHeader + Simple(At(16, 3), "a"));
        m_folder.Write("events/log", "");
        m_folder.Write("victim", "v");
        m_folder.Write("out", "old");
    }
    /// What was said, when it failed.
    std::string Write(const std::string& name, const std::string& root = "events") {
        std::vector<std::string> words = GetParam();
        for (std::string& word : words)
            word = word == "ROOT"  ? m_folder.Native(root)
                   : word == "LOG" ? m_folder.Native(root) + "/log"
                                   : word;
        words.push_back(name.starts_with('/') ? name : m_folder.Native(name));
        const SOutcome done = RunTool(words);
        return words[0] == "status" ? (done.status == 3 ? done.out : "") : done.status == 0 ? "" : done.error;
    }
    unsigned Mode(const char* name) {
        struct stat status {};
        EXPECT_EQ(stat(m_folder.Native(name).c_str(), &status), 0) << name;
        return status.st_mode & 07777U;
    }
    /// A link that belongs to another user, where the test may make one.
    bool PlantLink(const std::string& target, const char* name) {
        std::filesystem::create_symlink(target, m_folder.Native(name));
        return lchown(m_folder.Native(name).c_str(), kOther, kOther) == 0;
    }
    CScratchFolder m_folder;
};

INSTANTIATE_TEST_SUITE_P(Commands, COutputFile,
                         testing::Values(std::vector<std::string>{"report", "ROOT", "-o"},
                                         std::vector<std::string>{"archive", "ROOT", "--ndjson"},
                                         std::vector<std::string>{"status", "ROOT", "LOG", "--warn-silent",
                                                                  "0", "--critical-silent", "0",
                                                                  "--prometheus"}),
                         [](const auto& row) { return row.param[0]; });

TEST_P(COutputFile, IsWrittenWholeInItsPlace) {
    for (const auto& [old, wanted] : {std::pair(04777U, 0666U), {0600U, 0600U}, {0640U, 0640U}}) {
        m_folder.Write("out", "old");
        chmod(m_folder.Native("out").c_str(), old);
        EXPECT_EQ(Write("out"), "");
        EXPECT_EQ(Mode("out"), wanted);
    }
    const mode_t mask = umask(027);
    EXPECT_EQ(Write("new"), "");
    umask(mask);
    EXPECT_EQ(Mode("new"), 0640U);
    for (const char* target : {"out", "to come", "/dev/null", "real/../out"}) {
        std::filesystem::remove(m_folder.Native("link"));
        std::filesystem::create_symlink(target, m_folder.Native("link"));
        EXPECT_EQ(Write("link"), "") << target;
        EXPECT_TRUE(std::filesystem::is_symlink(m_folder.Native("link"))) << target;
    }
    EXPECT_GT(m_folder.Read("to come").size(), 3U);
    m_folder.Write("out", "old");
    std::filesystem::create_hard_link(m_folder.Native("out"), m_folder.Native("twin"));
    EXPECT_EQ(Write("out"), "");
    EXPECT_EQ(m_folder.Read("twin"), "old");
    EXPECT_GT(m_folder.Read("out").size(), 3U);
    for (const char* name : {"no/such", "real", "out/", "/dev/full"})
        EXPECT_NE(Write(name), "") << name;
    int ends[2]{};
    char first = 0;
    EXPECT_TRUE(pipe2(ends, O_NONBLOCK) == 0 && fcntl(ends[1], F_SETPIPE_SZ, 1 << 20) > 0);
    EXPECT_EQ(Write("/dev/fd/" + std::to_string(ends[1])), "");
    EXPECT_EQ(read(ends[0], &first, 1), 1) << "a pipe takes the bytes as they come";
    close(ends[0]);
    close(ends[1]);
}

TEST_P(COutputFile, IsNotSteeredToAnotherFile) {
    std::filesystem::create_symlink("victim", m_folder.Native("out.tmp"));
    EXPECT_EQ(Write("out"), "") << "a name that is easy to guess";
    const bool canPlant =
        PlantLink("victim", "planted") && PlantLink("real", "folder") && PlantLink("real/new", "nowhere");
    if (canPlant) {
        for (const char* name : {"planted", "folder/out", "nowhere"}) {
            EXPECT_TRUE(Contains(Write(name), "belongs to another user")) << name;
            EXPECT_TRUE(Contains(RunIn(m_folder, "archive @/events --sqlite @/" + std::string(name)).error,
                                 "belongs to another user"));
        }
        EXPECT_EQ(chown(m_folder.Native("out").c_str(), kOther, kOther), 0);
        EXPECT_EQ(Write("out"), "");
        struct stat status {};
        EXPECT_EQ(stat(m_folder.Native("out").c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, kOther);
    }
    EXPECT_EQ(m_folder.Read("victim"), "v");
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.Native("real")));
}

TEST_P(COutputFile, LetsOneWriteAtATime) {
    m_folder.Write(".out.abcdef.tmp", "of one that was killed");
    m_folder.Write(".out.aaaaaa.tmp", "of one that still writes");
    const int other = open(m_folder.Native(".out.aaaaaa.tmp").c_str(), O_RDWR);
    EXPECT_EQ(flock(other, LOCK_EX), 0);
    EXPECT_EQ(Write("out"), "");
    EXPECT_TRUE(!m_folder.Has(".out.abcdef.tmp") && m_folder.Has(".out.aaaaaa.tmp"));
    close(other);
    if (GetParam()[0] != "report")
        return; // the waiting takes long
    const int old = open(m_folder.Native("out").c_str(), O_RDWR);
    EXPECT_EQ(flock(old, LOCK_EX), 0);
    EXPECT_TRUE(Contains(Write("out"), "another program is writing"));
    close(old);
}

TEST(LineOutput, KeepsTheOldFileWhenLinesAreMissing) {
    const CScratchFolder folder;
    folder.Write("lines", "old");
    for (const auto& [name, said] :
         {std::pair("lines", "lines: not replaced, because"), {"new", "new: not written, because"}})
        EXPECT_TRUE(Contains(RunIn(folder, "archive @/none --ndjson @/" + std::string(name)).error, said));
    EXPECT_EQ(folder.Read("lines"), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Native()), {}), 1);
}

} // namespace
} // namespace ruvo::test
