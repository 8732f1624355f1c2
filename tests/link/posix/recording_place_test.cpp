// Where a recording may be made, on a system with links and modes, and what becomes of it on a full disk.
#include "support/hex.h"
#include "support/scratch_folder.h"

#include "link/recording/recording.h"
#include "link/recording/recording_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

static std::string g_examined; ///< whose free space was asked for last
static unsigned long g_free = 1'000'000;
static bool g_isCutRefused = false;

extern "C" { // in the place of the C library's

int statvfs(const char* path, struct statvfs* status) noexcept {
    g_examined = path;
    *status = {};
    status->f_frsize = 1;
    status->f_blocks = status->f_bavail = g_free;
    return 0;
}

int ftruncate(int file, off_t length) noexcept {
    errno = EIO;
    return g_isCutRefused ? -1 : static_cast<int>(syscall(SYS_ftruncate, file, length));
}

} // extern "C"

namespace ruvo::test {

/// Adds an entry while no file can grow beyond that.
static void AppendWithin(std::size_t length, CRecordingFile& file, std::size_t bodySize = 2) {
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit{length, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    file.Append(ERecordingEntry::Event, std::vector<std::uint8_t>(bodySize, 7));
    setrlimit(RLIMIT_FSIZE, &before);
}

TEST(RecordingFile, WhatAFullDiskHasNoRoomForIsAGapInIt) {
    const CScratchFolder folder;
    CRecordingFile file;
    EXPECT_TRUE(file.Make({folder.Path("x.rec"), 1000, kMaxRecording}).Good());
    const std::size_t head = folder.Read("x.rec").size();
    std::string want;
    // What is left free, how much the file may grow, what is added to it then, and how long the entry's body
    // is.
    const std::tuple<const char*, unsigned long, std::size_t, const char*, std::size_t> rows[] = {
        {"just enough is left free", 1000, 4, "03030707", 2},
        {"too little is left free", 999, 100, "", 2},
        {"no room for the whole gap", 1000, 2, "", 2},
        {"no room for what is behind the gap", 1000, 6, "020402", 2},
        {"room again", 1000, 100, "02040103030707", 2},
        {"nothing was left out since", 1000, 100, "03030707", 2},
        {"an entry too long for any disk", 1000, 2 * kMaxRecordingEntry, "", kMaxRecordingEntry},
    };
    for (const auto& [name, left, room, added, bodySize] : rows) {
        g_free = left;
        AppendWithin(head + want.size() / 2 + room, file, bodySize);
        want += added;
        EXPECT_EQ(HexDigits(folder.Read("x.rec").substr(head)), want) << name;
        EXPECT_EQ(g_examined, bodySize == 2 ? folder.Native() + "/" : "") << name;
        g_examined.clear();
    }
    g_isCutRefused = true;
    AppendWithin(head + want.size() / 2 + 5, file);
    g_isCutRefused = false;
    AppendWithin(RLIM_INFINITY, file);
    EXPECT_EQ(HexDigits(folder.Read("x.rec").substr(head)), want + "0204010303")
        << "nothing follows what is left";
}

TEST(RecordingFile, IsNewAndItsOwnersAlone) {
    const CScratchFolder folder;
    folder.Write("a.b.rec", "old");
    folder.Write("target", "old");
    ASSERT_EQ(symlink(folder.Native("target").c_str(), folder.Native("a.b-2.rec").c_str()), 0);
    ASSERT_EQ(symlink(folder.Native("nowhere").c_str(), folder.Native("a.b-3.rec").c_str()), 0);
    ASSERT_EQ(mkdir(folder.Native("a.b-4.rec").c_str(), 0700), 0);
    ASSERT_EQ(symlink(folder.Native().c_str(), folder.Native("link").c_str()), 0);
    {
        CRecordingFile file;
        EXPECT_TRUE(file.Make({folder.Path("a.b.rec"), 0, kMaxRecording}).Good());
        EXPECT_EQ(file.Path(), folder.Path("a.b-5.rec"));
        file.End(ERecordingEnd::Closed);
        CRecordingFile through;
        EXPECT_EQ(through.Make({folder.Path("link\\x.rec"), 0, kMaxRecording}).failure,
                  EFileFailure::NotPlain);
    }
    struct stat made = {};
    ASSERT_EQ(stat(folder.Native("a.b-5.rec").c_str(), &made), 0);
    EXPECT_EQ(made.st_mode & 07777U, 0600U);
    EXPECT_EQ(folder.Read("a.b.rec") + folder.Read("target"), "oldold");
    ASSERT_EQ(mkdir(folder.Native("d.d").c_str(), 0700), 0);
    for (const auto& [name, second] :
         {std::pair("c.rec", "c-2.rec"), {".rec", ".rec-2"}, {"d.d\\c", "d.d\\c-2"}}) {
        CRecordingFile first, next;
        EXPECT_TRUE(first.Make({folder.Path(name), 0, kMaxRecording}).Good());
        EXPECT_TRUE(next.Make({folder.Path(name), 0, kMaxRecording}).Good());
        EXPECT_EQ(next.Path(), folder.Path(second));
    }
    EXPECT_FALSE(folder.Has("nowhere") || folder.Has("x.rec"));
}

TEST(RecordingFile, ThatCannotBeReadIsNotCalledSomethingElse) {
    Variant::Bytes bytes;
    EXPECT_EQ(ReadRecordingFile("C:\\proc\\self\\mem", bytes), ERecordingRead::Unreadable);
    EXPECT_EQ(ReadRecordingFile("C:\\proc\\self\\status", bytes), ERecordingRead::NoRecording);
}

} // namespace ruvo::test
