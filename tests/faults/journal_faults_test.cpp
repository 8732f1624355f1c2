// What a journal comes to when the disk fails as it is emptied, copied or read.
#include "memory_disk.h"

#include "ledger/journal_copy.h"
#include "ledger/journal_file.h"

#include <gtest/gtest.h>

namespace ruvo::test {

/// With one visit, which lasts; it is on the disk.
static void Make(CJournalFile& journal) {
    g_disk = {};
    g_disk.PutFolder("C:\\s");
    SChain chain;
    EXPECT_TRUE(journal.Make("C:\\s", "now") && journal.Append(EFrame::Visit, 1, chain, Pack(SVisitInfo{})));
    g_disk.FlushAll();
}
/// The nth operation from now on.
static void Break(std::size_t nth) {
    g_disk.operations = 0;
    g_disk.faults = {{nth, nth, EFileFailure::Other}};
}

TEST(JournalFaults, OneThatMayNotBeEmptyTakesNoMore) {
    for (const std::size_t nth : {0U, 1U, 2U, 3U}) { // the cut, and two flushes
        CJournalFile journal;
        Make(journal);
        Break(nth);
        journal.Clear();
        EXPECT_EQ(journal.End() == kJournalHead.size(), nth != 1) << nth;
        SChain chain;
        EXPECT_EQ(journal.Append(EFrame::Visit, 2, chain, {}), nth < 2) << nth;
        EXPECT_EQ(std::pair(journal.HasFailed(), journal.Failure().Good()), std::pair(nth >= 2, nth < 2));
    }
}

TEST(JournalFaults, ACopyIsWholeAndOnTheDiskOrThereIsNone) {
    std::string outcomes;
    for (const std::size_t nth : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 10U}) {
        CJournalFile journal;
        Make(journal);
        const SJournalContents contents = ReadJournal(journal.File());
        Break(nth);
        const SFileResult copied = CopyOpenEntries(journal.Path(), journal.File(), contents);
        outcomes += copied.Good() ? "copied " : std::to_string(copied.systemCode) + " ";
        const auto left = g_disk.Files();
        EXPECT_EQ(left.size(), copied.Good() ? 2U : 1U) << nth;
        g_disk.EndMachine([](std::size_t) { return std::size_t{0}; }); // only what is flushed is left
        EXPECT_EQ(g_disk.Files(), left) << nth;
        EXPECT_TRUE(!copied.Good() || left.at(CopyPathOf(journal.Path())) == left.at(journal.Path())) << nth;
    }
    EXPECT_EQ(outcomes, "0 1 1 1 1 1 copied 0 0 copied ") << "a name's failures have no cause";
    for (const std::size_t last : {1U, 2U}) { // an earlier run's copy may be all that can be read
        CJournalFile journal;
        Make(journal);
        const SJournalContents contents = ReadJournal(journal.File());
        g_disk.Put(CopyPathOf(journal.Path()), "earlier");
        g_disk.faults = {{g_disk.operations + 1, g_disk.operations + last, EFileFailure::Other}};
        EXPECT_EQ(CopyOpenEntries(journal.Path(), journal.File(), contents).Good(), last == 1);
        EXPECT_EQ(g_disk.Files().at(CopyPathOf(journal.Path())), "earlier");
    }
}

TEST(JournalFaults, AReaderTakesNoMoreThanItHasRead) {
    std::vector<std::uint8_t> frame;
    SChain chain;
    MakeFrame(frame, EFrame::Visit, 1, chain, {});
    for (const int claimed : {0, 0xF0}) { // of the payload's length, the third byte
        frame[11] = static_cast<std::uint8_t>(claimed);
        for (const std::size_t end : {frame.size() - 1, frame.size(), frame.size() + 1'000'000'000}) {
            g_disk = {};
            g_disk.Put("C:\\j", {reinterpret_cast<const char*>(frame.data()), frame.size()});
            Break(5); // the second search for a place
            CFile file;
            EXPECT_TRUE(file.Open("C:\\j", {.read = true}).Good());
            SFrame read;
            EXPECT_EQ(CFrameReader(file, 0, 1, end).Next(read), claimed == 0 && end >= frame.size()) << end;
        }
    }
}

} // namespace ruvo::test
