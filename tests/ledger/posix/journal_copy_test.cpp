// What lies where the copy of a damaged journal is made.
#include "ledger/journal_copy.h"
#include "ledger/journal_file.h"
#include "support/scratch_folder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace ruvo::test {

TEST(JournalCopy, IsItsOwnersAloneWhateverAnEndHasLeft) {
    namespace fs = std::filesystem;
    const CScratchFolder folder;
    CJournalFile journal;
    SChain chain;
    ASSERT_TRUE(journal.Make(folder.Path(), "now") &&
                journal.Append(EFrame::Visit, 1, chain, Pack(SVisitInfo{})) && journal.Flush());
    const SJournalContents contents = ReadJournal(journal.File());
    const std::string copy = CopyPathOf(journal.Path());
    const auto native = [&](const std::string& path) {
        return folder.Native(path.substr(path.rfind('\\') + 1));
    };
    const fs::path unfinished = native(copy + ".new");
    fs::create_symlink(folder.Native("elsewhere"), unfinished);
    EXPECT_FALSE(CopyOpenEntries(journal.Path(), journal.File(), contents).Good() || folder.Has("elsewhere"));
    fs::remove(unfinished);
    std::ofstream(unfinished) << std::string(1000, 'x'); // the beginning of a longer one
    fs::permissions(unfinished, fs::perms(0600));
    EXPECT_TRUE(CopyOpenEntries(journal.Path(), journal.File(), contents).Good());
    EXPECT_EQ(fs::file_size(native(copy)), journal.End());
    fs::remove(native(copy));
    EXPECT_TRUE(CopyOpenEntries(journal.Path(), journal.File(), contents).Good());
    EXPECT_EQ(fs::status(native(copy)).permissions(), fs::perms(0600));
}

} // namespace ruvo::test
