// Files and paths, and the smaller services of the system.
#include "platform/clock.h"
#include "platform/debug_output.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/full_path_text.h"
#include "platform/message_box.h"
#include "platform/modules.h"
#include "platform/native_text.h"
#include "platform/posix/file_system_room.h"
#include "platform/posix/native_path.h"
#include "platform/registry.h"
#include "platform/single_instance.h"
#include "support/scratch_folder.h"

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <regex>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ruvo {
namespace {

TEST(FormFullPath, GivesTheAnswersOfTheTable) {
    std::ifstream observed(RUVO_TEST_DATA "/platform/full_path_cases.txt");
    const std::regex row("'(.*)' -> '(.*)'");
    ASSERT_TRUE(observed);
    for (std::string line; std::getline(observed, line);) {
        if (std::smatch part; std::regex_match(line, part, row)) {
            EXPECT_EQ(FormFullPath(part.str(1), "C:\\work\\dir"), part.str(2)) << line;
        } else {
            EXPECT_TRUE(line.starts_with("#")) << line;
        }
    }
    EXPECT_EQ(FormFullPath("x", "C:\\a.\\b "), "C:\\a.\\b \\x"); // a folder that exists keeps its name
    EXPECT_EQ(FormFullPath(".", "C:\\a.\\b "), "C:\\a.\\b ");
    EXPECT_EQ(FormFullPath("..\\.", "C:\\"), "C:\\");
    EXPECT_EQ(FullPath("C:\\" + std::string(256, 'x')).size() +
                  FullPath("C:\\" + std::string(257, 'x')).size(),
              259U);
    EXPECT_EQ(FullPath("x"), FormFullPath("x", CurrentFolder()));
}

TEST(NativePath, MapsBothWays) {
    std::string native;
    for (const char* const path : {"C:\\srv\\ev", "c:/srv\\ev", "/srv", "a\\b", "C:a\\b", "C:", "C:\\",
                                   "ab:c", "D:\\x", "d:x", "", "//s/x"}) {
        native += ToNativePath(path).value_or("none") + " ";
    }
    EXPECT_EQ(native, "/srv/ev /srv/ev /srv a/b a/b . / ab:c none none none none ");
    EXPECT_EQ(ToNativePath(std::string("a\0b", 3)), std::nullopt);
    EXPECT_EQ(FromNativePath("/srv/ev") + FromNativePath("a/b"), "C:\\srv\\eva\\b");
    EXPECT_FALSE(!IsDriveRoot("C:") || !IsDriveRoot("c:\\") || IsDriveRoot("D:") || IsDriveRoot("") ||
                 IsDriveRoot("C:\\x") || IsDriveRoot("\\"));
    setenv("TMPDIR", "/var/tmp", 1);
    EXPECT_EQ(TemporaryFolder(), "C:\\var\\tmp\\");
    unsetenv("TMPDIR");
}

// The exit status of a child process that runs the code; -1 when it did not end by itself.
int RunInChild(const std::function<int()>& code) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(code());
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

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
    EXPECT_FALSE(RemovePlainFile(folder.Path("linked\\file")) || !RemovePlainFile(folder.Path("file")));
}

TEST(CFile, IsSharedUnderItsLockAndTakenBack) {
    const CScratchFolder folder;
    const std::string link = folder.Path("link");
    const std::string target = folder.Path("target");
    const SOpenMode make{.write = true, .create = true, .exclusive = true};
    std::filesystem::create_symlink("target", folder.Native("link"));
    std::filesystem::create_symlink("circle", folder.Native("circle"));
    CFile made;
    CFile other;
    std::size_t count = 0;
    ASSERT_TRUE(made.Open(link, make).Good());
    EXPECT_FALSE(other.Open(link, make).Good() || other.Open(folder.Path("circle"), make).Good());
    ASSERT_TRUE(other.Open(target, {.write = true}).Good());
    EXPECT_TRUE(other.TryLock() == EFileLock::Taken && made.TryLock() == EFileLock::HeldByAnother);
    EXPECT_FALSE(other.RemoveIfEmpty()) << "another has made it";
    EXPECT_TRUE(other.Close().Good() && made.TryLock() == EFileLock::Taken);
    EXPECT_TRUE(other.Open(target, {.read = true}).Good() && other.TryLock() == EFileLock::Unknown);
    EXPECT_TRUE(Put(made, "x", count).Good() && !made.RemoveIfEmpty() && made.SetLength(0).Good());
    std::filesystem::rename(folder.Native("target"), folder.Native("moved"));
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
}

TEST(Files, AreListedNamedAndCopiedSafely) {
    const CScratchFolder folder;
    EXPECT_TRUE(MakeFolder(folder.Path("sub")).Good() && !MakeFolder(folder.Path("none\\sub")).Good());
    EXPECT_EQ(MakeFolder(folder.Path("sub")).failure, EFileFailure::Exists);
    folder.Write("file", "");
    std::filesystem::create_directory_symlink(folder.Native("sub"), folder.Native("link"));
    std::filesystem::create_directory(folder.Native("..\\..\\out")); // one name here, a path above the seam
    std::vector<SFolderEntry> entries;
    EXPECT_TRUE(ListFolder(folder.Path(), entries) && entries.size() == 3);
    for (const SFolderEntry& entry : entries) {
        EXPECT_EQ(entry.isFolder, entry.name == "sub") << entry.name;
        EXPECT_EQ(entry.isFile, entry.name == "file") << entry.name;
    }
    EXPECT_FALSE(ListFolder(folder.Path("none"), entries));
    const std::string first = MakeUniqueFile(folder.Path(), "RWT");
    EXPECT_TRUE(first.starts_with(folder.Path("RWT")) && first != MakeUniqueFile(folder.Path("\\"), "RWT"));
    EXPECT_TRUE(GetPathKind(first) == EPathKind::File && MakeUniqueFile(folder.Path("none"), "RWT").empty());
    const std::string source = folder.Write("a", "secret");
    chmod(folder.Native("a").c_str(), 0600);
    EXPECT_TRUE(CopyToNewFile(source, folder.Path("b")) && folder.Read("b") == "secret");
    EXPECT_EQ(std::filesystem::status(folder.Native("b")).permissions(), std::filesystem::perms(0600));
    EXPECT_FALSE(CopyToNewFile(folder.Path("none"), folder.Path("c")) || folder.Has("c"));
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
        EXPECT_EQ(RoomOf(status).bytes, test.bytes) << test.name;
        EXPECT_EQ(RoomOf(status).files, test.more) << test.name;
    }
}

TEST(Registry, ReadsTextsNumbersAndDefaults) {
    const CScratchFolder folder;
    unsetenv("RUVO_REGISTRY_USER");
    setenv("XDG_CONFIG_HOME", "relative", 1); // and so no place to look
    setenv("HOME", folder.Native().c_str(), 1);
    setenv("RUVO_REGISTRY_MACHINE", folder.Native("none.ini").c_str(), 1);
    std::filesystem::create_directories(folder.Native(".config/ruvo"));
    folder.Write(".config/ruvo/registry.ini",
                 "[Software\\A B]\nText=C:\\x\nNumber=dword:0000aB01\nOdd=dword:1x\n"
                 "Bare\n=default\n[CLSID]\n@=other\n");
    const auto read = [](const char* key, const char* value, std::size_t capacity) {
        return ReadRegistryValue(ERegistryRoot::CurrentUser, key, value, capacity).value_or("none");
    };
    EXPECT_EQ(read("SOFTWARE\\A B", "text", 4), "C:\\x");
    EXPECT_EQ(read("Software\\A B", "Text", 3), "none");
    EXPECT_EQ(read("Software\\A B", "Number", 4), std::string("\x01\xAB\0\0", 4));
    EXPECT_EQ(read("Software\\A B", "Odd", 100) + read("Software\\A B", "Bare", 100), "dword:1xnone");
    EXPECT_EQ(read("Software\\A B", "", 100) + read("CLSID", "", 100), "defaultother");
    EXPECT_EQ(ReadRegistryValue(ERegistryRoot::LocalMachine, "CLSID", "", 9), std::nullopt);
}

TEST(Modules, AreFoundUnderTheirSystemName) {
    const CScratchFolder folder;
    folder.Write("broken.so", "no library");
    CModule module;
    EXPECT_FALSE(module.Load(folder.Path("missing.dll")) || module.Load(folder.Path("broken.dll")));
    EXPECT_FALSE(module.IsLoaded() || module.FindEntry("sin") || module.FindEntry(1U));
    EXPECT_TRUE(module.Load("libm.so.6") && module.FindEntry("sin") && !module.FindEntry(1U));
    EXPECT_EQ(CodeFolder(), ProgramPath().substr(0, ProgramPath().rfind('\\')));
}

TEST(CInstanceMarker, IsHeldByOneProcessAtATime) {
    const CScratchFolder folder;
    setenv("RUVO_LOCK_DIR", folder.Native().c_str(), 1);
    const auto claim = [](const std::string& name) { // in a process of its own
        return EInstanceClaim(RunInChild([&] { return static_cast<int>(CInstanceMarker().Claim(name)); }));
    };
    {
        CInstanceMarker marker;
        EXPECT_EQ(marker.Claim("A/b"), EInstanceClaim::Claimed);
        EXPECT_EQ(claim("A/b"), EInstanceClaim::AlreadyRunning);
        EXPECT_EQ(claim("other"), EInstanceClaim::Claimed);
    }
    EXPECT_EQ(claim("A/b"), EInstanceClaim::Claimed);
    std::filesystem::create_symlink(folder.Native("target"), folder.Native("linked.lock"));
    EXPECT_TRUE(claim("linked") == EInstanceClaim::MarkerFailed && !folder.Has("target"));
    setenv("RUVO_LOCK_DIR", folder.Native("none").c_str(), 1);
    EXPECT_EQ(claim("A/b"), EInstanceClaim::MarkerFailed);
    unsetenv("RUVO_LOCK_DIR");
}

TEST(CInstanceMarker, KeepsAUsersRunsApartHoweverTheyAreStarted) {
    const CScratchFolder folder;
    setenv("XDG_STATE_HOME", folder.Native("state").c_str(), 1);
    const auto claim = [&](const char* site, CInstanceMarker& marker) {
        setenv("RUVO_SITE", site, 1);
        return marker.Claim("A");
    };
    const std::string longName(251, '\xE9'); // as long as a site's file can have it
    const std::string otherLong = longName.substr(1) + "x";
    const struct {
        const char* running; ///< its site; of none, as a run by hand is
        const char* started;
        EInstanceClaim outcome;
    } cases[] = {
        {"", "", EInstanceClaim::AlreadyRunning},
        {"", "yard", EInstanceClaim::AlreadyRunning},
        {"yard", "", EInstanceClaim::AlreadyRunning},
        {"yard", "yard", EInstanceClaim::AlreadyRunning},
        {"yard", "east", EInstanceClaim::Claimed},
        {"a b", "a_b", EInstanceClaim::Claimed},
        {longName.c_str(), longName.c_str(), EInstanceClaim::AlreadyRunning},
        {longName.c_str(), otherLong.c_str(), EInstanceClaim::Claimed},
    };
    for (const auto& test : cases) {
        CInstanceMarker marker;
        EXPECT_EQ(claim(test.running, marker), EInstanceClaim::Claimed);
        const auto outcome = RunInChild([&] {
            setenv("XDG_RUNTIME_DIR", folder.Native().c_str(), 1); // as a login has it, and cron has not
            CInstanceMarker second;
            return static_cast<int>(claim(test.started, second));
        });
        EXPECT_EQ(EInstanceClaim(outcome), test.outcome) << test.running << "-" << test.started;
    }
    CInstanceMarker marker;
    EXPECT_TRUE(folder.Has("state/ruvo/A.lock") && folder.Has("state/ruvo/A@a%20b.lock"));
    chmod(folder.Native("state/ruvo").c_str(), 0777);
    EXPECT_EQ(claim("", marker), EInstanceClaim::MarkerFailed) << "others could take it";
    unsetenv("XDG_STATE_HOME");
    unsetenv("RUVO_SITE");
}

TEST(Texts, GoWhereTheyAreSent) {
    EXPECT_EQ(NativeRelayText(std::string_view("a\0\r\n\x7F\xE4", 6)), "a    \xC3\xA4");
    const CScratchFolder folder;
    for (const char* const name : {"trace", "no/such/folder", "trace"}) {
        setenv("RUVO_DEBUG_OUTPUT", folder.Native(name).c_str(), 1);
        WriteDebugOutput("a\r\n\x1B\x7F");
    }
    EXPECT_EQ(folder.Read("trace"), "a\r\n\x1B\x7F\na\r\n\x1B\x7F\n");
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_TRUE(grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const std::string name = ptsname(terminal);
    const int kept =
        open(name.c_str(), O_RDWR | O_NOCTTY); // what was written goes with the last that has it open
    setenv("RUVO_DEBUG_OUTPUT", name.c_str(), 1);
    WriteDebugOutput("a\r\n\x1B\x7F");
    std::array<char, 32> shown{};
    EXPECT_EQ(std::string(shown.data(), static_cast<std::size_t>(read(terminal, shown.data(), shown.size()))),
              "a....\r\n")
        << "no command for the terminal";
    close(kept);
    close(terminal);
    testing::internal::CaptureStdout();
    ShowMessageBox(EMessageIcon::Warning, "Title", "First\nSecond");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "[Warning] Title\nFirst\nSecond\n\n");
    // In a host program that knows nothing of pipes, both go where nobody reads.
    const int ended = RunInChild([] {
        int ends[2] = {};
        signal(SIGPIPE, SIG_DFL);
        setenv("RUVO_DEBUG_OUTPUT", "stderr", 1);
        if (pipe(ends) != 0 || close(ends[0]) != 0 || dup2(ends[1], 1) != 1 || dup2(ends[1], 2) != 2) {
            return 1;
        }
        WriteDebugOutput("line\n");
        ShowMessageBox(EMessageIcon::Warning, "Title", "Text");
        sigset_t held;
        return pthread_sigmask(SIG_BLOCK, nullptr, &held) == 0 && sigismember(&held, SIGPIPE) == 0 &&
                       signal(SIGPIPE, SIG_DFL) == SIG_DFL
                   ? 42
                   : 2;
    });
    EXPECT_EQ(ended, 42) << "neither ends it, and the signal is as it was";
}

TEST(Clock, FollowsTheTimeZone) {
    setenv("TZ", "AAA-05:30", 1);
    const SCalendarTime utc = UtcTime();
    const SCalendarTime local = LocalTime().value_or(SCalendarTime{});
    const int ahead = (local.hour * 60 + local.minute - utc.hour * 60 - utc.minute + 24 * 60) % (24 * 60);
    EXPECT_TRUE(ahead == 330 || ahead == 331) << ahead; // a minute may have ended in between
    setenv("TZ", "AAA0BBB,J1/0,J365/25", 1);
    EXPECT_TRUE(IsDaylightTime());
}

} // namespace
} // namespace ruvo
