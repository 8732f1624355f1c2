// What this program has open is closed again, and no program that it starts finds it open.
#include "platform/child_process.h"
#include "platform/child_program.h"
#include "platform/end_requests.h"
#include "platform/environment.h"
#include "platform/file_replacement.h"
#include "platform/files.h"
#include "platform/mapped_part.h"
#include "platform/single_instance.h"
#include "support/scratch_folder.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>

namespace ruvo {
namespace {

constexpr int kMost = 256; // no test has more open

template <class Wanted>
int CountOpen(Wanted isWanted) {
    int count = 0;
    for (int descriptor = 0; descriptor < kMost; ++descriptor) {
        const int flags = fcntl(descriptor, F_GETFD);
        count += flags != -1 && isWanted(flags) ? 1 : 0;
    }
    return count;
}

int Open() {
    return CountOpen([](int) { return true; });
}

int Inherited() {
    return CountOpen([](int flags) { return (flags & FD_CLOEXEC) == 0; });
}

/// Every test of this program leaves as many open as it found. It begins with the signals as they are by
/// default: whoever has started this program may have it ignore some, and then they are heard by no test.
class CNothingLeftOpen : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& /*test*/) override {
        m_before = Open();
        for (const int asking : {SIGHUP, SIGINT, SIGQUIT})
            signal(asking, SIG_DFL);
    }
    void OnTestEnd(const testing::TestInfo& /*test*/) override { EXPECT_EQ(Open(), m_before) << "left open"; }

    int m_before = 0;
};
const bool g_isWatched = (testing::UnitTest::GetInstance()->listeners().Append(new CNothingLeftOpen), true);

TEST(Descriptors, AreNotHandedOn) {
    const CScratchFolder folder;
    folder.Write("f", "old");
    EXPECT_TRUE(HoldsInChild([&] {
        using namespace file_replacement;
        const int before = Inherited();
        SetEnvironmentValue("RUVO_LOCK_DIR", folder.Native());
        CFile plain, any, made;
        CMappedPart mapped;
        CInstanceMarker marker;
        COldFile old;
        CNewFile fresh;
        CChildProgram program;
        const auto requests = HearEndRequests();
        const bool areOpen =
            plain.Open(folder.Path("f"), {.read = true, .write = true, .plain = true}).Good() &&
            any.Open(folder.Path("f"), {.read = true}).Good() &&
            made.Open(folder.Path("new"), {.write = true, .create = true, .exclusive = true}).Good() &&
            mapped.Map(plain, 0, 3) && marker.Claim("A") == EInstanceClaim::Claimed &&
            old.Open(folder.Path("f"), EFileKind::Secret).Good() && fresh.CreateBeside(old).Good() &&
            program.Start({.path = "C:\\bin\\cat", .arguments = {}, .environment = {}, .input = "x"})
                .empty() &&
            requests != nullptr;
        const bool isAsBefore = Inherited() == before;
        program.Await({});
        return areOpen && isAsBefore;
    }));
}

TEST(Descriptors, AreClosedAfterEachUse) {
    const CScratchFolder folder;
    folder.Write("f", "text");
    const int before = Open();
    std::vector<SFolderEntry> entries;
    EXPECT_TRUE(FlushFolder(folder.Path()) && FlushFolder(folder.Path("none")) &&
                ListFolder(folder.Path(), entries) && !MakeUniqueFile(folder.Path(), "RWT").empty() &&
                CopyToNewFile(folder.Path("f"), folder.Path("g")) && !InstanceFolder().empty());
    EXPECT_EQ(Open(), before);
    CFile closed;
    std::uint64_t number = 7, length = 7;
    std::size_t count = 7, got = 7;
    std::uint8_t byte = 0;
    for (const SFileResult& result :
         {closed.GetLength(length), closed.Seek(0, ESeekOrigin::Start, number), closed.Read({&byte, 1}, got),
          closed.Write({&byte, 1}, count), closed.Write({}, count), closed.SetLength(0), closed.FlushToDisk(),
          closed.FlushWritten(), closed.Close()})
        EXPECT_EQ(result.failure, EFileFailure::BadDescriptor);
    EXPECT_EQ(number + length + count + got, 0U);
    EXPECT_EQ(closed.TryLock(), EFileLock::Unknown);
    EXPECT_FALSE(closed.IsLocked() || closed.IsAt(folder.Path("f")) || closed.RemoveIfEmpty());
    CFile virtualFile; // whose file system has no disk
    ASSERT_TRUE(virtualFile.Open("C:\\proc\\self\\comm", {.write = true}).Good());
    EXPECT_TRUE(virtualFile.FlushToDisk().Good() && virtualFile.FlushWritten().Good());
}

} // namespace
} // namespace ruvo
