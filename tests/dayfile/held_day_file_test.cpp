// The day file of a visit: what is made for it, how records go out, and how a failed write is taken back.
#include "support/fake_system.h"
#include "support/scratch_folder.h"

#include "dayfile/day_file_writer.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace ruvo::test {

static void Add(CHeldDayFile& file, const std::string& image) {
    file.Add({reinterpret_cast<const std::uint8_t*>(image.data()), image.size()});
}

TEST(HeldDayFile, TakesAwayWhatItHasMadeAndNothingElse) {
    const CScratchFolder folder;
    std::filesystem::create_directory(folder.Native("empty"));
    std::filesystem::create_directory(folder.Native("there"));
    folder.Write("there/old.evt", "");
    const struct {
        const char* in;
        const char* name;
        bool isMade;
        bool isFolderMade;
        const char* left; ///< empty for nothing
    } cases[] = {{"a\\b", "new.evt", true, true, ""},
                 {"empty", "new.evt", true, false, "empty"},
                 {"there", "old.evt", false, false, "there/old.evt"}};
    for (const auto& test : cases) {
        const std::string path = folder.Path(test.in) + "\\" + test.name;
        CHeldDayFile file;
        ASSERT_FALSE(file.Hold(path));
        EXPECT_EQ(
            std::tuple(file.IsMade(), file.IsFolderMade(), file.HasFlushFailed(), file.AreRootNamesLeft()),
            std::tuple(test.isMade, test.isFolderMade, false, false));
        RemoveEmptyDayFile(path, true);
        EXPECT_TRUE(file.File().IsAt(path)) << "it is held";
        file.Release();
        EXPECT_TRUE(*test.left == '\0' ? !folder.Has("a") : folder.Has(test.left)) << test.left;
        folder.Write("empty/new.evt", "");
        file.Release();
        EXPECT_TRUE(folder.Has("empty/new.evt")) << "another has made it since";
        std::filesystem::remove(folder.Native("empty/new.evt"));
    }
}

TEST(HeldDayFile, WritesWholeImagesInPieces) {
    const CScratchFolder folder;
    const CTextFileHeader header = MakeEventListHeader(1, kEventListText);
    const std::string image(60, 'r'), large(std::size_t{64} * 1024, 'l');
    const std::string whole = COffFile::HeaderBytes(header) + image + large + image;
    g_debugOutput.clear();
    CHeldDayFile file;
    ASSERT_FALSE(file.Hold(folder.Path("f.evt")));
    file.StartAt(file.LengthNow(), header);
    Add(file, image);
    EXPECT_EQ(folder.Read("f.evt"), "") << "it waits for others";
    file.StartAt(0, header);
    file.Finish();
    EXPECT_TRUE(file.StoredCount() == 0 && folder.Read("f.evt").empty()) << "a header alone is none";
    file.StartAt(file.LengthNow(), header);
    for (const std::string* one : {&image, &large, &image})
        Add(file, *one);
    file.Finish();
    EXPECT_EQ(std::tuple(file.StoredCount(), file.WrittenFrom(), file.WrittenTo()),
              std::tuple(3U, 0U, whole.size()));
    EXPECT_EQ(g_debugOutput.find("START"), g_debugOutput.rfind("START")) << "the header goes out once";
    EXPECT_TRUE(file.CutBack() && file.StoredCount() == 3 && !file.HasFlushFailed()) << "nothing has failed";
    file.StartAt(0, header);
    file.StartAt(file.LengthNow(), header);
    Add(file, image);
    file.Finish();
    EXPECT_EQ(std::tuple(file.StoredCount(), file.WrittenFrom()), std::tuple(1U, whole.size()));
    EXPECT_TRUE(folder.Read("f.evt") == whole + image);
}

/// The handle is of no use any more, and part of what was to be written is in the file.
TEST(HeldDayFile, IsCutBackToItsLastWholeImage) {
    const CScratchFolder folder;
    std::string both;
    for (int n = 0; n < 10000; ++n)
        both += static_cast<char>(n * 7 % 251);
    const auto cut = [&](const std::string& there, bool isCut, std::size_t whole, std::size_t left) {
        SCOPED_TRACE(there.size());
        CHeldDayFile file;
        ASSERT_FALSE(file.Hold(folder.Write("f.evt", "old")));
        file.StartAt(file.LengthNow(), {});
        Add(file, both.substr(0, 6000));
        Add(file, both.substr(6000));
        static_cast<void>(file.File().Close());
        EXPECT_THROW(file.Finish(), CFileException);
        folder.Write("f.evt", "old" + there);
        for (int time = 0; time < 2; ++time) {
            EXPECT_EQ(file.CutBack(), isCut);
            EXPECT_EQ(std::tuple(file.StoredCount(), file.WrittenTo(), file.HasFlushFailed()),
                      std::tuple(whole, 3 + (isCut ? left : 0), false));
        }
        EXPECT_TRUE(folder.Read("f.evt") == "old" + there.substr(0, left));
    };
    for (const std::size_t part : {0U, 1U, 2U, 5000U})
        cut(both.substr(0, part), true, 0, 0);
    for (const std::size_t part : {6000U, 6001U, 9999U})
        cut(both.substr(0, part), true, 1, 6000);
    cut(both, true, 2, both.size());
    for (const std::string& others : {std::string("other"), both.substr(0, 5000) + "other", both + "other"})
        cut(others, false, 0, others.size());
}

} // namespace ruvo::test
