#include "paths/path_utilities.h"
#include "platform/modules.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

namespace ruvo {
namespace {

TEST(PathText, IsCutStrippedAndJudged) {
    std::string parts;
    for (const char* const text : {"C:\\a\\b.ini", "C:", "C:x.y.z", "a.b\\c", "/a/b.", ".ini", ""}) {
        const SPathParts got = SplitPath(text);
        parts += got.drive + "|" + got.folder + "|" + got.name + "|" + got.extension + " ";
    }
    EXPECT_EQ(parts, "C:|\\a\\|b|.ini C:||| C:||x.y|.z |a.b\\|c| |/a/|b|. |||.ini ||| ");
    std::string path = "C:\\a/b\\/\\";
    StripTrailingSeparators(path);
    EXPECT_EQ(path, "C:\\a/b");
    for (const char c : std::string("/*?\"<>|"))
        EXPECT_TRUE(HasForbiddenCharacter(std::string("C:\\a") + c)) << c;
    EXPECT_FALSE(HasForbiddenCharacter("C:\\a b.c;d\xE4"));
    const std::string program = ProgramPath().substr(0, ProgramPath().rfind('\\') + 1);
    for (const std::string text : {"ev", "C:", "\\\\", "1:\\x", "C:x", "\\ev", ""})
        EXPECT_EQ(AbsoluteFromProgramFolder(text), program + text);
    EXPECT_EQ(AbsoluteFromProgramFolder("\\\\srv") + AbsoluteFromProgramFolder("d:\\"), "\\\\srvd:\\");
}

TEST(Folders, AreMadeForFilesAndRemovedWithout) {
    const CScratchFolder folder;
    for (const char* const left : {"a\\b\\", "c\\d?", "bare"})
        EXPECT_EQ(EnsureFolderOfFile(folder.Path(left)), left == std::string("bare")) << left;
    EXPECT_TRUE(std::filesystem::is_empty(folder.Native()));
    EXPECT_TRUE(EnsureFolderOfFile(folder.Path("a\\b\\c\\f.txt")));
    EXPECT_TRUE(folder.Has("a/b/c") && !folder.Has("a/b/c/f.txt"));
    EXPECT_TRUE(RemoveFolderTree(folder.Path("a")) && !folder.Has("a"));
    std::filesystem::create_directories(folder.Native("a/b/c"));
    folder.Write("a/b/f", "");
    EXPECT_FALSE(RemoveFolderTree(folder.Path("a")) || RemoveFolderTree(folder.Path("none")));
    EXPECT_TRUE(folder.Has("a/b/f") && !folder.Has("a/b/c"));
}

} // namespace
} // namespace ruvo
