// The extractor killed before each of its system calls that change a file: whatever state that leaves,
// nothing written earlier is lost, no file is torn, and the next run completes.
#include "e2e/cases.h"
#include "e2e/program.h"

#include "dayfile/day_file_reader.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <optional>
#include <set>
#include <sstream>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ruvo::test {
namespace {

/// What is only made, renamed or removed in between shows at the next of these.
bool ChangesFiles(const __ptrace_syscall_info& call) {
    static const std::set<std::uint64_t> kWriting{SYS_write, SYS_ftruncate, SYS_fsync, SYS_fdatasync};
    return call.op == PTRACE_SYSCALL_INFO_ENTRY &&
           (kWriting.contains(call.entry.nr) ||
            (call.entry.nr == SYS_openat && (call.entry.args[2] & O_CREAT) != 0));
}

enum class EEnd { Killed, Completed, CannotTrace };

/// Runs the program and kills it when the `number`th of those calls begins.
EEnd KillAtCall(const char* const* command, int number) {
    const pid_t program = fork();
    if (program == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0)
            execv(command[0], const_cast<char* const*>(command));
        _exit(99);
    }
    int status = 0;
    waitpid(program, &status, 0);
    if (!WIFSTOPPED(status))
        return EEnd::CannotTrace;
    ptrace(PTRACE_SETOPTIONS, program, nullptr,
           PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL);
    EEnd end = EEnd::Completed;
    for (pid_t thread = program; thread != program || WIFSTOPPED(status);
         thread = waitpid(-1, &status, __WALL)) {
        __ptrace_syscall_info call{};
        if (ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof call, &call) > 0 && ChangesFiles(call) &&
            --number == 0) {
            kill(program, SIGKILL);
            end = EEnd::Killed;
        }
        ptrace(PTRACE_SYSCALL, thread, nullptr, nullptr); // fails for a thread that has ended
    }
    return end;
}

struct SDayFile {
    std::string bytes;
    std::size_t records = 0;
    std::optional<std::uint64_t> tornAt;
};

std::map<std::string, SDayFile> DayFilesBelow(const std::string& folder) {
    std::map<std::string, SDayFile> files;
    for (const auto& [name, bytes] : FilesBelow(folder, true)) {
        if (!name.ends_with(".evt")) // a killed check of the folder may leave its empty RWT file
            continue;
        SDayFile& file = files[name];
        file = {bytes, 0, ReadDayFileEnd(folder + "/" + name).torn};
        CDayFileReader reader;
        EXPECT_TRUE(reader.Open(folder + "/" + name).Good());
        for (SDayFileItem item; reader.Next(item);)
            file.records += item.record != nullptr ? 1 : 0;
    }
    return files;
}

} // namespace

TEST(Kill, BeforeEveryChangeOfAFile) {
    const std::string events = "[relay.generate]\ncount = 3\nseed = 1\n";
    const CProgramRun run(kLink + Relay("serial = 5", kTrip + events) + Relay("serial = 6", events, "0002"),
                          "", "[RUVO_SERIAL]\nRV001=5\nRV002=6\n");
    run.Shell("sed -i /^trace/d $DIR/substation.toml"); // the server's own files do not count
    for (const auto& [name, file] :
         {std::pair("P32LS_SUBSTATION", "substation.toml"), std::pair("RUVO_LOCK_DIR", ""),
          std::pair("RUVO_STATE_DIR", "state"), std::pair("RUVO_REGISTRY_USER", "none"),
          std::pair("RUVO_REGISTRY_MACHINE", "none")})
        setenv(name, run.Folder().Native(file).c_str(), 1);
    const std::string ini = run.Folder().Native("site.ini");
    const char* const command[] = {RUVO_BIN_DIR "/ruvo", ini.c_str(), nullptr};
    const std::string today = UtcDate();
    int kills = 0, recoveries = 0;
    for (const bool appends : {false, true}) {
        EEnd end = EEnd::Killed;
        for (int number = 1; end == EEnd::Killed; ++number) {
            SCOPED_TRACE(testing::Message() << (appends ? "appending" : "new files") << ", call " << number);
            run.Shell("rm -rf $DIR/ev $DIR/run.log $DIR/state" +
                      std::string(appends ? "; $RUVO $DIR/site.ini" : ""));
            auto earlier = DayFilesBelow(run.Folder().Native("ev"));
            end = KillAtCall(command, number);
            auto left = DayFilesBelow(run.Folder().Native("ev"));
            ASSERT_EQ(run.Run(), "exit 0\n");
            const auto after = DayFilesBelow(run.Folder().Native("ev"));
            if (today != UtcDate() || end == EEnd::CannotTrace)
                GTEST_SKIP() << "midnight has passed, or this system lets nobody trace a process";
            kills += end == EEnd::Killed ? 1 : 0;
            ASSERT_EQ(after.size(), 2U);
            for (const auto& [name, file] : after) {
                const bool isFirst = name.find("0001") != std::string::npos;
                ASSERT_TRUE(left[name].bytes.starts_with(earlier[name].bytes));
                ASSERT_GE(left[name].records, earlier[name].records);
                ASSERT_TRUE(file.bytes.starts_with(left[name].bytes));
                const std::size_t taken = isFirst ? 4 : 3;
                ASSERT_GE(file.records, left[name].records + taken);
                ASSERT_LE(file.records, earlier[name].records + 2 * taken);
                ASSERT_FALSE(left[name].tornAt) << "a header goes out together with records";
            }
            std::istringstream lines(run.Log());
            for (std::string line; std::getline(lines, line); ++recoveries)
                ASSERT_NE(line.find(" of a visit that was ended "), std::string::npos) << line;
        }
    }
    EXPECT_TRUE(kills > 20 && recoveries > 5) << kills << " kills, " << recoveries << " recoveries";
    RecordProperty("kills", kills);
}

} // namespace ruvo::test
