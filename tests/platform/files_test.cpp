// Files and folders: writing and reading, locks, failures, and what may not be followed.
#include "platform/child_process.h"
#include "platform/file_replacement.h"
#include "platform/files.h"
#include "platform/mapped_part.h"
#include "platform/posix/free_space.h"
#include "platform/system_calls.h"
#include "support/scratch_folder.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace ruvo {
namespace {

SFileResult Put(CFile& file, std::string_view text, std::size_t& count) {
    return file.Write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, count);
}

TEST(CFile, WritesSeeksCutsAndReads) {
    const CScratchFolder folder;
    CFile file;
    std::size_t count = 0;
    std::uint64_t place = 0;
    std::uint8_t buffer[8]{};
    ASSERT_TRUE(file.Open(folder.Path("f"), {.read = true, .write = true, .create = true}).Good());
    EXPECT_TRUE(Put(file, "abcdef", count).Good() && file.Seek(-4, ESeekOrigin::End, place).Good());
    EXPECT_TRUE(count == 6 && place == 2);
    EXPECT_TRUE(Put(file, "XY", count).Good() && file.SetLength(5).Good() && file.FlushToDisk().Good());
    EXPECT_TRUE(file.GetLength(place).Good() && place == 5);
    EXPECT_TRUE(file.Seek(0, ESeekOrigin::Start, place).Good() && file.Read(buffer, count).Good());
    EXPECT_TRUE(count == 5 && buffer[2] == 'X');
    EXPECT_TRUE(file.Close().Good() && file.Close().failure == EFileFailure::BadDescriptor);
    EXPECT_EQ(Put(file, "", count).failure, EFileFailure::BadDescriptor);
    EXPECT_EQ(folder.Read("f"), "abXYe");
    ASSERT_TRUE(file.Open(folder.Path("f"), {.write = true, .truncate = true}).Good());
    EXPECT_EQ(folder.Read("f"), "");
}

TEST(CMappedPart, StoresLikeAWriteAndFailsLikeOne) {
    const CScratchFolder folder;
    const std::string before(10'000, '.');
    folder.Write("f", before);
    CFile file;
    CMappedPart mapped;
    const std::string text = "twenty-one characters";
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    ASSERT_TRUE(file.Open(folder.Path("f"), {.write = true}).Good());
    EXPECT_FALSE(mapped.Map(file, 5'000, 1'000'000)) << "it cannot be read";
    ASSERT_TRUE(file.Open(folder.Path("f"), {.read = true, .write = true}).Good());
    ASSERT_TRUE(mapped.Map(file, 5'000, 1'000'000));
    EXPECT_TRUE(mapped.Covers(5'000, 1'000'000) && !mapped.Covers(5'001, 1'000'000) && !mapped.Covers(0, 1));
    EXPECT_TRUE(mapped.Covers(4'096, 1) && mapped.Covers(1'005'000, 0) && !mapped.Covers(2'000'000, 1));
    const pid_t child = fork(); // killed at once, it flushes nothing
    if (child == 0) {
        static_cast<void>(mapped.Store(8'180, bytes).Good() && raise(SIGKILL) == 0);
    }
    waitpid(child, nullptr, 0);
    EXPECT_EQ(folder.Read("f"), std::string(before).replace(8'180, text.size(), text));
    ASSERT_TRUE(file.SetLength(8'192).Good());
    for (const char* const again : {"", ", as before"})
        EXPECT_FALSE(mapped.Store(8'180, bytes).Good()) << "the last of it has no page in the file" << again;
    EXPECT_TRUE(mapped.Store(5'000, bytes).Good());
    EXPECT_EQ(folder.Read("f").substr(5'000, text.size()), text);
    EXPECT_TRUE(file.Close().Good() && !mapped.Map(file, 5'000, 1) && !mapped.Covers(5'000, 1));
    EXPECT_NE(RunInChild([] { return kill(getpid(), SIGBUS); }), 0) << "what is of no store ends it as ever";
}

TEST(CFile, TellsWhyItCannotOpen) {
    const CScratchFolder folder;
    folder.Write("file", "x");
    mkfifo(folder.Native("pipe").c_str(), 0600);
    const SOpenMode write{.write = true, .create = true};
    const auto open = [](const std::string& path, SOpenMode mode) {
        CFile file;
        const SFileResult result = file.Open(path, mode);
        EXPECT_TRUE(!SystemErrorText(result.systemCode).empty() && !file.IsOpen()) << path;
        return result.failure;
    };
    EXPECT_EQ(open(folder.Path("none"), {.read = true}), EFileFailure::NotFound);
    for (const std::string& path : {folder.Path("none\\f"), folder.Path("file\\f"), std::string("D:\\f")}) {
        EXPECT_EQ(open(path, write), EFileFailure::BadPath) << path;
    }
    for (const SOpenMode mode : {write, SOpenMode{.read = true}}) {
        EXPECT_EQ(open(folder.Path(), mode), EFileFailure::AccessDenied);
        EXPECT_EQ(open(folder.Path("pipe"), mode), EFileFailure::Other);
        EXPECT_EQ(open("C:\\dev\\null", mode), EFileFailure::Other);
    }
    std::filesystem::create_directory_symlink(folder.Native(), folder.Native("linked"));
    std::filesystem::create_symlink(folder.Native("file"), folder.Native("to-file"));
    const SOpenMode plain{.read = true, .write = true, .plain = true};
    for (const char* const name : {"", "pipe", "to-file", "linked\\file", "file\\f"}) {
        EXPECT_EQ(open(folder.Path(name), plain), EFileFailure::NotPlain) << name;
    }
    EXPECT_EQ(open(folder.Path("none"), plain), EFileFailure::NotFound);
    EXPECT_EQ(open(folder.Path("none\\f"), plain), EFileFailure::BadPath);
    EXPECT_EQ(open("C:\\proc", plain), EFileFailure::NotPlain);
    for (const SOpenMode mode : {plain, SOpenMode{.read = true}})
        EXPECT_EQ(open("no such file", mode), EFileFailure::NotFound) << "in the current folder";
    EXPECT_FALSE(RemovePlainFile(folder.Path("linked\\file")) || !RemovePlainFile(folder.Path("file")));
}

TEST(CFile, IsSharedUnderItsLockAndTakenBack) {
    const CScratchFolder folder;
    const std::string link = folder.Path("link");
    const std::string target = folder.Path("target");
    const SOpenMode make{.write = true, .create = true, .exclusive = true};
    std::filesystem::create_symlink("target", folder.Native("link"));
    std::filesystem::create_symlink("circle", folder.Native("circle"));
    EXPECT_TRUE(IsAbsent(folder.Path("none")) && IsAbsent(folder.Path("none\\f")) &&
                !IsAbsent(folder.Path()) && !IsAbsent(folder.Path("circle")) && !IsAbsent("D:\\f"));
    CFile made;
    CFile other;
    std::size_t count = 0;
    ASSERT_TRUE(made.Open(link, make).Good());
    EXPECT_FALSE(other.Open(link, make).Good() || other.Open(folder.Path("circle"), make).Good());
    ASSERT_TRUE(other.Open(target, {.write = true}).Good());
    EXPECT_TRUE(other.TryLock() == EFileLock::Taken && made.TryLock() == EFileLock::HeldByAnother);
    EXPECT_FALSE(other.RemoveIfEmpty()) << "another has made it";
    const int third = ::open(folder.Native("target").c_str(), O_RDWR | O_CLOEXEC);
    const off_t place = off_t{1} << 62; // one byte there, and no other
    for (const auto& [begin, size] : {std::pair(off_t{0}, place), {place + 1, off_t{0}}}) {
        struct flock asked = {F_WRLCK, SEEK_SET, begin, size, 0};
        EXPECT_TRUE(fcntl(third, F_OFD_GETLK, &asked) == 0 && asked.l_type == F_UNLCK) << begin;
    }
    close(third);
    EXPECT_TRUE(other.Close().Good() && made.TryLock() == EFileLock::Taken);
    EXPECT_TRUE(other.Open(target, {.read = true}).Good() && other.TryLock() == EFileLock::Unknown);
    EXPECT_TRUE(other.IsLocked() == true && made.IsLocked() == false);
    EXPECT_TRUE(Put(made, "x", count).Good() && !made.RemoveIfEmpty() && made.SetLength(0).Good());
    folder.Write("moved", "gives way");
    EXPECT_TRUE(RenameFile(target, folder.Path("moved")) && !RenameFile(target, folder.Path("moved")));
    EXPECT_FALSE(made.IsAt(target) || made.RemoveIfEmpty());
    std::filesystem::rename(folder.Native("moved"), folder.Native("target"));
    EXPECT_TRUE(made.IsAt(target) && made.IsAt(link) && made.RemoveIfEmpty());
    EXPECT_FALSE(made.IsAt(target) || folder.Has("target"));
}

// A child process writes 10 bytes where its file-size limit leaves room for 4.
TEST(CFile, ReportsAFileSizeLimitAndWhatWasWritten) {
    const CScratchFolder folder;
    const int written = RunInChild([&] {
        const rlimit limit{4, 4};
        CFile file;
        std::size_t count = 0;
        const bool ready = file.Open(folder.Path("f"), {.write = true, .create = true}).Good() &&
                           setrlimit(RLIMIT_FSIZE, &limit) == 0;
        const bool full = Put(file, "0123456789", count).failure == EFileFailure::DiskFull;
        return ready && full ? static_cast<int>(count) : -1;
    });
    EXPECT_EQ(written, 4);
    EXPECT_EQ(folder.Read("f"), "0123");
    const std::string source = folder.Write("long", "0123456789");
    EXPECT_EQ(RunInChild([&] {
                  const rlimit limit{4, 4};
                  return setrlimit(RLIMIT_FSIZE, &limit) == 0 && !CopyToNewFile(source, folder.Path("g")) ? 0
                                                                                                          : 1;
              }),
              0);
    EXPECT_FALSE(folder.Has("g")) << "half a copy is none";
}

TEST(Files, AreListedNamedAndCopiedSafely) {
    const CScratchFolder folder;
    EXPECT_TRUE(MakeFolder(folder.Path("sub")).Good() && !MakeFolder(folder.Path("none\\sub")).Good());
    EXPECT_EQ(MakeFolder(folder.Path("sub")).failure, EFileFailure::Exists);
    folder.Write("file", "");
    std::filesystem::create_directory_symlink(folder.Native("sub"), folder.Native("link"));
    std::filesystem::create_directory(folder.Native("..\\..\\out")); // one name here, a path above the seam
    std::vector<SFolderEntry> entries;
    for (const bool areUnknown : {true, false}) {
        test::g_hidesKinds = areUnknown;
        EXPECT_TRUE(ListFolder(folder.Path(), entries) && entries.size() == 3);
        for (const SFolderEntry& entry : entries) {
            EXPECT_EQ(entry.isFolder, entry.name == "sub") << entry.name;
            EXPECT_EQ(entry.isFile, entry.name == "file") << entry.name;
        }
    }
    EXPECT_FALSE(ListFolder(folder.Path("none"), entries) || !entries.empty() || IsMarkedReadOnly(""));
    const std::string first = MakeUniqueFile(folder.Path(), "RWT");
    EXPECT_TRUE(first.ends_with(".tmp")) << first;
    EXPECT_TRUE(MakeUniqueFile(folder.Path() + "/", "RWT").starts_with(folder.Path() + "/RWT"));
    EXPECT_TRUE(first.starts_with(folder.Path("RWT")) && first != MakeUniqueFile(folder.Path("\\"), "RWT"));
    EXPECT_TRUE(GetPathKind(first) == EPathKind::File &&
                MakeUniqueFile(folder.Path("none"), "RWT") + MakeUniqueFile("D:\\", "RWT") == "");
    const std::string source = folder.Write("a", "secret");
    chmod(folder.Native("a").c_str(), 0600);
    EXPECT_TRUE(CopyToNewFile(source, folder.Path("b")) && folder.Read("b") == "secret");
    EXPECT_EQ(std::filesystem::status(folder.Native("b")).permissions(), std::filesystem::perms(0600));
    EXPECT_FALSE(CopyToNewFile(first, folder.Path("b")) || CopyToNewFile(source, "D:\\x")) << "not new";
    for (const std::string& unread : {folder.Path("none"), std::string("C:\\proc\\self\\mem")})
        EXPECT_FALSE(CopyToNewFile(unread, folder.Path("c")) || folder.Has("c")) << unread;
    chmod(folder.Native("a").c_str(), 0550);
    const mode_t mask = umask(0);
    EXPECT_TRUE(CopyToNewFile(source, folder.Path("d")) && MakeFolder(folder.Path("all")).Good());
    umask(mask);
    for (const auto& [name, mode] : {std::pair("d", 0640), {"all", 0777}})
        EXPECT_EQ(std::filesystem::status(folder.Native(name)).permissions(), std::filesystem::perms(mode));
    using enum EFileFailure;
    const auto failure = [&](auto name) {
        return CanMakeEntryIn(folder.Path(name), EPathKind::File).failure;
    };
    EXPECT_TRUE(failure("sub") == None && failure("file") == BadPath && failure("none") == NotFound);
    chmod(folder.Native("sub").c_str(), 0555);
    const uid_t user = geteuid(); // root may everything
    EXPECT_TRUE(seteuid(user == 0 ? 65534 : user) == 0 && failure("sub") == AccessDenied &&
                seteuid(user) == 0);
}

// Another replacement ends between this one's opening and its lock, and another user removes the new file.
TEST(FileReplacement, GoesOnWithTheFileThatNowHasTheName) {
    using namespace file_replacement;
    const CScratchFolder folder;
    const std::string path = folder.Write("f", "old");
    COldFile old;
    COldFile waiting;
    CNewFile made;
    EXPECT_TRUE(old.Open(path, EFileKind::Secret).Good() && made.CreateBeside(old).Good());
    EXPECT_TRUE(waiting.Open(path, EFileKind::Secret).Good());
    std::filesystem::rename(folder.Native("f"), folder.Native("moved"));
    folder.Write("f", "new");
    EXPECT_TRUE(waiting.Lock().Good() && waiting.Contains("new"));
    EXPECT_EQ(GetPathKind(made.Path()), EPathKind::File) << "no leftover while it is held";
    EXPECT_TRUE(RemovePlainFile(made.Path()));
    const SAccessResult taken = made.Replace(waiting);
    EXPECT_TRUE(taken.failure == EAccessFailure::NotReplaced && taken.systemCode == 0);
}

TEST(FileReplacement, TellsWhatItRefuses) {
    using enum EAccessFailure;
    const CScratchFolder folder;
    const std::string path = folder.Write("f", "old");
    const auto expect = [](const SAccessResult& result, EAccessFailure failure, long code, const char* name) {
        EXPECT_TRUE(result.failure == failure && result.systemCode == code) << name << result.systemCode;
        errno = 0;
    };
    folder.Write("twin", "");
    std::filesystem::create_hard_link(folder.Native("twin"), folder.Native("other"));
    std::filesystem::create_symlink("round", folder.Native("round"));
    for (const auto& [name, failure, code] : {std::tuple("f", None, 0),
                                              {"none", NotFound, ENOENT},
                                              {"none\\f", NotFound, ENOENT},
                                              {"f\\", NotFound, ENOTDIR},
                                              {"", NotFound, 0},
                                              {"round", UntrustedLink, 0},
                                              {"twin", HardLinked, 0}})
        expect(CheckReplaceable(folder.Path(name)), failure, code, name);
    expect(CheckReplaceable("D:\\x"), NotFound, ENOENT, "another drive");
    expect(WriteNewPrivateFile("D:\\x", "", ""), NotCreated, ENOENT, "a new one there");
    expect(WriteNewPrivateFile(path, "", ""), Exists, EEXIST, "a new one");
    for (const char* const bytes : {"olds", "ol", "other"}) {
        CSecretFileReplacement secret;
        EXPECT_TRUE(secret.Prepare(path, "new").Good());
        expect(secret.Commit(bytes), Changed, 0, bytes);
    }
    CSecretFileReplacement late;
    EXPECT_TRUE(late.Prepare(path, "new").Good());
    std::filesystem::rename(folder.Native("f"), folder.Native("moved"));
    folder.Write("f", "old");
    expect(late.Commit("old"), Changed, 0, "another file");
    COutputFileReplacement output;
    EXPECT_TRUE(output.Open(folder.Path("to come")).Good() && output.Write("new").Good());
    std::filesystem::create_directory(folder.Native("to come"));
    expect(output.Commit(), NotReplaced, EISDIR, "a folder by now");
    std::string resolved;
    expect(ResolveOutputPath(folder.Native("round"), resolved), UntrustedLink, 0, "round");
    expect(ResolveOutputPath(folder.Native("to come//f"), resolved), None, 0, "to come");
    EXPECT_EQ(resolved, std::filesystem::canonical(folder.Native("to come")).string() + "/f");
}

TEST(FileReplacement, IsWhereALinkLeads) {
    const CScratchFolder folder;
    const std::string real = std::filesystem::canonical(folder.Native()).string() + "/";
    std::string resolved;
    mkfifo(folder.Native("pipe").c_str(), 0600);
    std::filesystem::create_symlink("pipe", folder.Native("link"));
    EXPECT_TRUE(ResolveOutputPath(folder.Native("link"), resolved).Good() && resolved == real + "pipe");
    folder.Write("f", "");
    for (const std::string name : {"", "f"}) {
        const int file = ::open((real + name).c_str(), O_RDONLY | O_CLOEXEC); // of what has a path
        EXPECT_TRUE(ResolveOutputPath("/proc/self/fd/" + std::to_string(file), resolved).Good());
        EXPECT_EQ(resolved + (name.empty() ? "/" : ""), real + name);
        close(file);
    }
}

TEST(FileReplacement, LetsTheGroupOfAPackageReadANewFile) {
    const CScratchFolder folder;
    for (const auto& [known, readers, mode] :
         {std::tuple("crew", "crew", 0640U), {"crew", "others", 0600U}, {"", "nobody", 0600U}}) {
        test::g_group = known;
        EXPECT_TRUE(WriteNewPrivateFile(folder.Path(readers), "x", readers).Good());
        EXPECT_EQ(std::filesystem::status(folder.Native(readers)).permissions(),
                  std::filesystem::perms(mode));
    }
    test::g_group = nullptr;
}

TEST(FileReplacement, IsOnTheDiskWithItsName) {
    const CScratchFolder folder;
    for (const int error : {EIO, ENOSPC, EDQUOT, EINVAL, ENOSYS, ENOTSUP, 0}) {
        const bool isDone = error != EIO && error != ENOSPC && error != EDQUOT;
        test::g_refused = error == 0 ? "" : "fsync";
        test::g_error = error;
        CSecretFileReplacement secret;
        test::g_interruptions = 2;
        const SAccessResult result = secret.Prepare(folder.Write("f", "old"), "new");
        EXPECT_TRUE(result.Good() == isDone && result.systemCode == (isDone ? 0 : error)) << error;
        errno = EIO; // of something else
        EXPECT_EQ(FlushFolder(folder.Path()), isDone) << error;
        for (const std::string& none : {folder.Path("f"), folder.Path("none"), std::string("D:\\x")})
            EXPECT_TRUE(FlushFolder(none)) << none;
        rlimit known{};
        getrlimit(RLIMIT_NOFILE, &known);
        const rlimit few{0, known.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
        EXPECT_FALSE(FlushFolder(folder.Path())) << "nobody has asked the disk";
        setrlimit(RLIMIT_NOFILE, &known);
        test::g_flushes = 0;
        EXPECT_TRUE(!isDone || (secret.Commit("old").Good() && test::g_flushes == 1)) << "of its folder";
    }
}

TEST(FileReplacement, KnowsWhatItCanHaveLeft) {
    using namespace file_replacement;
    for (const char* const name : {".f.abcdef.tmp", ".f.ghijkl.tmp", ".f.mnopqr.tmp", ".f.stuvwx.tmp",
                                   ".f.yz0123.tmp", ".f.45abcd.tmp"})
        EXPECT_TRUE(IsTemporaryName(name, "f")) << name;
    for (const char* const name : {".f.ABCDEF.tmp", ".f.6bcdef.tmp", ".g.abcdef.tmp", ".f.abcdef.txt",
                                   ".f.abcdefg.tmp", ".f.abcde.tmp", "f"})
        EXPECT_FALSE(IsTemporaryName(name, "f")) << name;
    const std::string longest(255, 'n'), made = TemporaryName(longest);
    EXPECT_TRUE(made.size() == 255 && IsTemporaryName(made, longest)) << made;
}

TEST(Files, RoomThatTheSystemDoesNotStateIsUnknown) {
    using Room = std::optional<std::uint64_t>;
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    const struct {
        const char* name;
        fsblkcnt_t size, left;
        fsfilcnt_t files, filesLeft;
        Room bytes, more;
    } cases[] = {{"a disk", 100, 3, 50, 7, 3 * 4096, 7},
                 {"a full disk", 100, 0, 50, 0, 0, 0},
                 {"no size stated", 0, 0, 50, 7, std::nullopt, 7},
                 {"files not counted", 100, 3, 0, 0, 3 * 4096, std::nullopt},
                 {"more than a number holds", most, most, 0, 0, most / 4096 * 4096, std::nullopt}};
    for (const auto& test : cases) {
        struct statvfs status = {};
        status.f_frsize = 4096;
        status.f_blocks = test.size;
        status.f_bavail = test.left;
        status.f_files = test.files;
        status.f_favail = test.filesLeft;
        EXPECT_EQ(FreeSpaceFrom(status).bytes, test.bytes) << test.name;
        EXPECT_EQ(FreeSpaceFrom(status).files, test.more) << test.name;
    }
    EXPECT_TRUE(FreeSpace(CScratchFolder().Path("none\\deep")).bytes) << "that of the nearest folder";
    EXPECT_FALSE(FreeSpace("C:\\proc").bytes) << "not that of the folder above it";
}

} // namespace
} // namespace ruvo
