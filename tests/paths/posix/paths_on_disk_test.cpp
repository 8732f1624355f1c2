// Paths on a disk with links and without other drives.
#include "paths/path_utilities.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstddef>

namespace ruvo {
namespace {

TEST(Existence, TellsFilesFromFolders) {
    const CScratchFolder folder;
    const std::string file = folder.Write("f", "");
    EXPECT_TRUE(DirectoryExists(folder.Path("\\/\\")) && DirectoryExists("C:") && DirectoryExists("C:\\"));
    EXPECT_FALSE(DirectoryExists(file) || DirectoryExists("D:\\") || DirectoryExists("") ||
                 DirectoryExists("\\"));
    EXPECT_TRUE(IsExistingFile(file) && CopyFileStrict(file, folder.Path("g")));
    EXPECT_FALSE(CopyFileStrict(file, folder.Path("g")) || IsExistingFile(folder.Path()) ||
                 IsExistingFile(folder.Path("none")));
    std::filesystem::create_symlink("gone", folder.Native("link"));
    for (const std::string& nearest :
         {folder.Path(), file, folder.Path("link"), std::string("D:"), std::string("\\\\srv\\share"),
          std::string("\\\\\\share"), std::string("\\none"), std::string("?")})
        EXPECT_EQ(NearestExisting(nearest + "\\a\\b"), nearest);
}

TEST(CreateDirectoryPath, ReportsTheFirstFolderItMade) {
    const CScratchFolder folder;
    std::string first = "before";
    const std::string file = folder.Write("f", "x");
    for (const std::string& bad :
         {std::string(), std::string("\\\\"), folder.Path("q?"), folder.Path("q/r"), file,
          folder.Path("f\\g"), std::string("D:\\q"), std::string("\\\\srv\\share\\q")})
        EXPECT_FALSE(CreateDirectoryPath(bad, first)) << bad;
    EXPECT_FALSE(MakeDirectory("") || MakeDirectory("\\") || MakeDirectory(folder.Path("x\\y")));
    EXPECT_TRUE(CreateDirectoryPath(folder.Path(), first) && MakeDirectory(folder.Path()));
    EXPECT_EQ(first, "before");
    EXPECT_FALSE(folder.Has("q?") || folder.Has("q"));
    EXPECT_TRUE(CreateDirectoryPath(folder.Path("a\\b\\\\"), first) && folder.Has("a/b"));
    EXPECT_EQ(first, folder.Path("a"));
    EXPECT_TRUE(CreateDirectoryPath(folder.Path("c\\"), first) && MakeDirectory(folder.Path("d\\")) &&
                folder.Has("d"));
    EXPECT_EQ(first, folder.Path("c"));
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Native());
    EXPECT_TRUE(CreateDirectoryPath("r\\s\\t", first) && folder.Has("r/s/t"));
    EXPECT_EQ(first, "r");
    std::filesystem::current_path(before);
}

TEST(Proofs, LeaveNothingBehindAndChangeNothing) {
    const CScratchFolder folder;
    const std::string file = folder.Write("file", "kept");
    const std::string tooLong(300, 'x');
    std::filesystem::create_directory(folder.Native("w?"));
    const std::string locked = folder.Write("locked", "");
    std::filesystem::permissions(folder.Native("locked"), std::filesystem::perms::owner_read);
    std::filesystem::create_symlink("gone", folder.Native("link"));
    EXPECT_TRUE(CanWriteInFolder(folder.Path("a\\b\\")) && CanWriteInFolder(folder.Path()));
    EXPECT_TRUE(CanCreateFile(file) && CanCreateFile(folder.Path("new")) &&
                CanCreateFile(folder.Path("a\\b\\new")) && CanCreateFile(folder.Path("link")) &&
                CanCreateFile(folder.Path("a\\..\\b\\new")));
    for (const std::string& bad :
         {std::string(), std::string("\\\\"), folder.Path("q?"), folder.Path("file\\x"), folder.Path("q/r"),
          folder.Path("y\\" + tooLong), folder.Path("y\\" + tooLong + "\\z")})
        EXPECT_FALSE(CanWriteInFolder(bad) || CanCreateFile(bad)) << bad;
    EXPECT_FALSE(CanWriteInFolder(file) || CanWriteInFolder("C:\\proc") ||
                 CanWriteInFolder(folder.Path("w?")));
    EXPECT_EQ(CanCreateFile(locked), geteuid() == 0) << "root may everything";
    EXPECT_FALSE(CanCreateFile("bare") || CanCreateFile(folder.Path("q\\")) || CanCreateFile(folder.Path()));
    EXPECT_TRUE(std::distance(std::filesystem::directory_iterator(folder.Native()), {}) == 4 &&
                folder.Read("file") == "kept");
}

// An empty file that a killed proof left is told by its name.
TEST(Proofs, ProveAFolderWithAFileThatIsKnownByItsName) {
    const CScratchFolder folder;
    const int watch = inotify_init1(IN_NONBLOCK);
    ASSERT_NE(inotify_add_watch(watch, folder.Native().c_str(), IN_CREATE), -1);
    EXPECT_TRUE(CanWriteInFolder(folder.Path()));
    alignas(inotify_event) std::array<char, 4096> made{};
    EXPECT_GT(read(watch, made.data(), made.size()), 0);
    close(watch);
    EXPECT_EQ(std::string(made.data() + offsetof(inotify_event, name), 3), "RWT");
}

} // namespace
} // namespace ruvo
