// Where a recording may be made, on a system with links and modes.
#include "support/scratch_folder.h"

#include "link/recording/recording.h"
#include "link/recording/recording_file.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace ruvo::test {

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
    EXPECT_FALSE(folder.Has("nowhere") || folder.Has("x.rec"));
}

TEST(RecordingFile, ThatCannotBeReadIsNotCalledSomethingElse) {
    Variant::Bytes bytes;
    EXPECT_EQ(ReadRecordingFile("C:\\proc\\self\\mem", bytes), ERecordingRead::Unreadable);
    EXPECT_EQ(ReadRecordingFile("C:\\proc\\self\\status", bytes), ERecordingRead::NoRecording);
}

} // namespace ruvo::test
