// Paths, and the smaller services of the system.
#include "platform/child_process.h"
#include "platform/clock.h"
#include "platform/debug_output.h"
#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/full_path_rules.h"
#include "platform/message_box.h"
#include "platform/modules.h"
#include "platform/native_text.h"
#include "platform/posix/native_path.h"
#include "platform/registry.h"
#include "platform/single_instance.h"
#include "platform/sites_folder.h"
#include "platform/standard_streams.h"
#include "platform/system_tools.h"
#include "support/case_table.h"
#include "support/scratch_folder.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ruvo {
namespace {

TEST(HasDeviceName, GivesTheAnswersOfTheTable) {
    test::ForEachCase<2>("platform/device_names.txt",
                         [](auto& path, auto& is) { EXPECT_EQ(HasDeviceName(path), is == "yes") << path; });
}

TEST(FormFullPath, GivesTheAnswersOfTheTable) {
    test::ForEachCase<2>("platform/full_path_cases.txt", [](auto& path, auto& want) {
        EXPECT_EQ(FormFullPath(path, "C:\\work\\dir"), want);
    });
    EXPECT_EQ(FormFullPath("x", "C:\\a.\\b "), "C:\\a.\\b \\x"); // a folder that exists keeps its name
    EXPECT_EQ(FormFullPath(".", "C:\\a.\\b "), "C:\\a.\\b ");
    EXPECT_EQ(FormFullPath("..\\.", "C:\\"), "C:\\");
    EXPECT_EQ(FormFullPath("x", "") + FormFullPath("x", "\\\\s\\x") + FormFullPath("\\\\s\\x\\y", ""),
              "\\\\s\\x\\y");
    EXPECT_EQ(FullPath("C:\\" + std::string(256, 'x')).size() +
                  FullPath("C:\\" + std::string(257, 'x')).size(),
              259U);
    EXPECT_EQ(FullPath("x"), FormFullPath("x", CurrentFolder()));
}

TEST(SharePath, HasOneSpelling) {
    std::string spelled;
    for (const char* const path : {R"(\\SRV\Share\Ev)", R"(\\?\UNC\Srv\S\Ev)", R"(\\SRV)", R"(\\SRV\S)",
                                   R"(\\?\C:\Ev)", R"(\\.\COM1)", R"(C:\Ev)", "", R"(\\)"})
        spelled += WithSmallShare(path) + " ";
    EXPECT_EQ(spelled, R"(\\srv\share\Ev \\?\UNC\srv\s\Ev \\srv \\srv\s \\?\C:\Ev \\.\COM1 C:\Ev  \\ )");
}

TEST(ShellWord, ReadsAsOneWordAgain) {
    for (const char* const word :
         {"/etc/ruvo/yard.ini", "a b", "it's", "$HOME;`x`", "", "S\u00FCd", "-x~*"}) {
        const std::string command = "printf %s " + ShellWord(word);
        FILE* const shell = popen(command.c_str(), "r");
        ASSERT_NE(shell, nullptr);
        std::string read(100, '\0');
        read.resize(std::fread(read.data(), 1, read.size(), shell));
        EXPECT_EQ(pclose(shell), 0);
        EXPECT_EQ(read, word) << command;
    }
    for (const char* const plain : {"/etc/ruvo/yard.ini", "\xC3\x80_9-+=:,@%"})
        EXPECT_EQ(ShellWord(plain), plain);
}

TEST(NativePath, MapsBothWays) {
    std::string native;
    for (const char* const path : {"C:\\srv\\ev", "c:/srv\\ev", "/srv", "a\\b", "C:a\\b", "C:", "C:\\",
                                   "ab:c", "D:\\x", "d:x", "", "//s/x"})
        native += ToNativePath(path).value_or("none") + " ";
    EXPECT_EQ(native, "/srv/ev /srv/ev /srv a/b a/b . / ab:c none none none none ");
    EXPECT_EQ(ToNativePath(std::string("a\0b", 3)), std::nullopt);
    EXPECT_EQ(FromNativePath("/srv/ev") + FromNativePath("a/b"), "C:\\srv\\eva\\b");
    EXPECT_FALSE(!IsDriveRoot("C:") || !IsDriveRoot("c:\\") || IsDriveRoot("D:") || IsDriveRoot("") ||
                 IsDriveRoot("C:\\x") || IsDriveRoot("\\") || IsDriveRoot("C:x"));
    const std::string longest(255, 'x');
    for (const auto& [set, folder] : {std::pair<std::string, std::string>("/var/tmp", "C:\\var\\tmp\\"),
                                      {"/var/tmp/", "C:\\var\\tmp\\"},
                                      {"", "C:\\tmp\\"},
                                      {"relative", "C:\\tmp\\"},
                                      {"/" + longest, "C:\\" + longest + "\\"},
                                      {"/x" + longest, ""}}) {
        setenv("TMPDIR", set.c_str(), 1);
        EXPECT_EQ(TemporaryFolder(), folder);
    }
    unsetenv("TMPDIR");
    EXPECT_EQ(SitesFolder() + AfterVisitFolder(), "C:\\etc\\ruvoC:\\etc\\ruvo\\after-visit.d");
}

TEST(Registry, ReadsTextsNumbersAndDefaults) {
    const CScratchFolder folder;
    unsetenv("RUVO_REGISTRY_USER");
    setenv("XDG_CONFIG_HOME", "relative", 1); // and so no place to look
    setenv("HOME", folder.Native().c_str(), 1);
    setenv("RUVO_REGISTRY_MACHINE", folder.Native("none.ini").c_str(), 1);
    folder.Write(".config/ruvo/registry.ini",
                 "[Software\\A B]\nText=C:\\x\nNumber=dword:0000aB01\nOdd=dword:1x\n"
                 "Long=dword:000000001\nNone=dword:\nBare\n=default\n[CLSID]\n@=other\n");
    const auto read = [](const char* key, const char* value, std::size_t capacity) {
        return ReadRegistryValue(ERegistryRoot::CurrentUser, key, value, capacity).value_or("none");
    };
    EXPECT_EQ(read("SOFTWARE\\A B", "text", 4), "C:\\x");
    EXPECT_EQ(read("Software\\A B", "Text", 3), "none");
    EXPECT_EQ(read("Software\\A B", "Number", 4), std::string("\x01\xAB\0\0", 4));
    EXPECT_EQ(read("Software\\A B", "Odd", 100) + read("Software\\A B", "Bare", 100), "dword:1xnone");
    EXPECT_EQ(read("Software\\A B", "", 100) + read("CLSID", "", 100), "defaultother");
    EXPECT_EQ(read("Software\\A B", "Long", 100) + read("Software\\A B", "None", 100) +
                  read("CLSID", "x", 100),
              "dword:000000001dword:none");
    EXPECT_EQ(ReadRegistryValue(ERegistryRoot::LocalMachine, "CLSID", "", 9), std::nullopt);
    unsetenv("RUVO_REGISTRY_MACHINE");
    setenv("XDG_CONFIG_HOME", "/x", 1);
    EXPECT_EQ(RegistryPlace(ERegistryRoot::CurrentUser) + RegistryPlace(ERegistryRoot::LocalMachine),
              "/x/ruvo/registry.ini/etc/ruvo/registry.ini");
}

TEST(Modules, AreFoundUnderTheirSystemName) {
    const CScratchFolder folder;
    folder.Write("broken.so", "no library");
    CModule module;
    EXPECT_FALSE(module.Load(folder.Path("missing.dll")) || module.Load(folder.Path("broken.dll")));
    EXPECT_FALSE(module.Load("D:\\x.dll"));
    EXPECT_EQ(module.FailureText(), "D:\\x.dll: no such drive");
    EXPECT_FALSE(module.IsLoaded() || module.FindEntry("sin") || module.FindEntry(1U));
    EXPECT_TRUE(module.Load("libm.so.6") && module.FindEntry("sin") && !module.FindEntry(1U));
    EXPECT_TRUE(module.FailureText().empty() && !module.Load("D:\\x.dll") && !module.IsLoaded());
    EXPECT_EQ(SystemModulePath("C:\\P.DLL") + SystemModulePath("x") + SystemModulePath("D:\\P.dll"),
              "/P.soxD:\\P.dll");
    EXPECT_TRUE(CanReadModule(folder.Path("broken.dll")) && !CanReadModule(folder.Path("none.dll")));
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
        EXPECT_EQ(marker.Claim("A/b"), EInstanceClaim::Claimed) << "its own is no obstacle";
        EXPECT_EQ(claim("A/b"), EInstanceClaim::AlreadyRunning);
        EXPECT_EQ(std::filesystem::status(folder.Native("A%2Fb.lock")).permissions(),
                  std::filesystem::perms(0600));
        EXPECT_EQ(claim("other"), EInstanceClaim::Claimed);
    }
    EXPECT_EQ(claim("A/b"), EInstanceClaim::Claimed);
    const std::string longest(64, 'n');
    EXPECT_TRUE(claim(longest) == EInstanceClaim::Claimed && folder.Has(longest + ".lock"));
    mkfifo(folder.Native("pipe.lock").c_str(), 0600);
    EXPECT_EQ(claim("pipe"), EInstanceClaim::MarkerFailed);
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
    test::ForEachCase<3>("platform/site_runs.txt", [&](auto& running, auto& started, auto& refused) {
        const auto name = [&](const std::string& site) {
            return site == "LONG" ? longName : site == "OTHER" ? otherLong : site;
        };
        CInstanceMarker marker;
        EXPECT_EQ(claim(name(running).c_str(), marker), EInstanceClaim::Claimed);
        const auto outcome = RunInChild([&] {
            setenv("XDG_RUNTIME_DIR", folder.Native().c_str(), 1); // as a login has it, and cron has not
            CInstanceMarker second;
            return static_cast<int>(claim(name(started).c_str(), second));
        });
        EXPECT_EQ(EInstanceClaim(outcome),
                  refused.empty() ? EInstanceClaim::Claimed : EInstanceClaim::AlreadyRunning);
    });
    CInstanceMarker marker;
    EXPECT_TRUE(folder.Has("state/ruvo/A.lock") && folder.Has("state/ruvo/A@a%20b.lock") &&
                folder.Has("state/ruvo/A@a-b_9.lock"));
    EXPECT_TRUE(
        folder.Has("state/ruvo/A@%E9%E9%E9%E9%E9%E9%E9%E9%E9%E9%E9%E9%E9%E9%E9%E~EF13AF9D598F14F4.lock"))
        << "runs of another version would not see each other";
    chmod(folder.Native("state/ruvo").c_str(), 0777);
    EXPECT_EQ(claim("", marker), EInstanceClaim::MarkerFailed) << "others could take it";
    unsetenv("XDG_STATE_HOME");
    unsetenv("RUVO_SITE");
}

TEST(Texts, GoWhereTheyAreSent) {
    EXPECT_EQ(NativeRelayText(std::string_view("a\0\r\n\x7F\xE4", 6)), "a    \xC3\xA4");
    const CScratchFolder folder;
    mkfifo(folder.Native("pipe").c_str(), 0600); // which nobody reads
    for (const char* const name : {"trace", "no/such/folder", "pipe", "trace"}) {
        setenv("RUVO_DEBUG_OUTPUT", folder.Native(name).c_str(), 1);
        WriteDebugOutput("a\r\n\x1B\x7F");
    }
    EXPECT_EQ(folder.Read("trace"), "a\r\n\x1B\x7F\na\r\n\x1B\x7F\n");
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_TRUE(grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const std::string name = ptsname(terminal);
    const int kept = open(name.c_str(), O_RDWR | O_NOCTTY); // what was written goes with the last close
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
    EXPECT_TRUE(HoldsInChild([] {
        int ends[2] = {};
        signal(SIGPIPE, SIG_DFL);
        setenv("RUVO_DEBUG_OUTPUT", "stderr", 1);
        if (pipe(ends) != 0 || close(ends[0]) != 0 || dup2(ends[1], 1) != 1 || dup2(ends[1], 2) != 2)
            return false;
        WriteDebugOutput("line\n");
        ShowMessageBox(EMessageIcon::Warning, "Title", "Text");
        sigset_t held;
        return pthread_sigmask(SIG_BLOCK, nullptr, &held) == 0 && sigismember(&held, SIGPIPE) == 0 &&
               signal(SIGPIPE, SIG_DFL) == SIG_DFL;
    })) << "neither ends it, and the signal is as it was";
}

TEST(StandardStreams, ThatWereClosedTakeAndReturnNothing) {
    EXPECT_TRUE(HoldsInChild([] {
        char byte = 0;
        close(0), close(1), close(2);
        OccupyClosedStandardStreams();
        const bool areOpen = fcntl(0, F_GETFD) + fcntl(1, F_GETFD) + fcntl(2, F_GETFD) == 0;
        const bool isRead = read(0, &byte, 1) != -1;
        return areOpen && !isRead && write(1, &byte, 1) + write(2, &byte, 1) == -2;
    }));
}

TEST(Clock, FollowsTheTimeZone) {
    setenv("TZ", "AAA-05:30", 1);
    const SCalendarTime utc = UtcTime();
    const SCalendarTime local = LocalTime().value_or(SCalendarTime{});
    const int ahead = (local.hour * 60 + local.minute - utc.hour * 60 - utc.minute + 24 * 60) % (24 * 60);
    EXPECT_TRUE(ahead == 330 || ahead == 331) << ahead; // a minute may have ended in between
    setenv("TZ", "AAA0BBB,J1/0,J365/25", 1);
    EXPECT_TRUE(IsDaylightTime());
    setenv("TZ", "AAA0", 1);
    EXPECT_FALSE(IsDaylightTime());
}

} // namespace
} // namespace ruvo
