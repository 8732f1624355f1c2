// The error log on a disk that takes no more, and between processes.
#include "log/log_fixture.h"
#include "paths/path_utilities.h"

#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace ruvo {

// A limit on the size of files cuts the write short, as a full disk would.
TEST_F(CErrorLog, PartOfALineIsTakenBack) {
    UseLog(m_folder.Write("run.log", "kept\r\n"));
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit before = std::exchange(limit, rlimit{16, limit.rlim_max});
    ::setrlimit(RLIMIT_FSIZE, &limit);
    WriteLogLine("does not fit");
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_NE(g_debugOutput, "");
    EXPECT_EQ(m_folder.Read("run.log"), "kept\r\n");
}

// Two processes write, one of them against a limit at which it takes half a line back and writes no more. A
// third one proves over and over that the log can be written.
TEST_F(CErrorLog, ProcessesKeepEachOthersLines) {
    UseLog(m_folder.Path("logs\\run.log"));
    constexpr int kLines = 2000;
    for (const rlim_t limit : {rlim_t{4099}, RLIM_INFINITY, rlim_t{0}}) {
        if (fork() == 0) {
            const rlimit size{limit, RLIM_INFINITY};
            ::setrlimit(RLIMIT_FSIZE, &size);
            for (int i = 0; i < kLines; ++i) {
                limit == 0
                    ? static_cast<void>(CanCreateFile(ErrorLogPath()))
                    : WriteLogLine((limit == RLIM_INFINITY ? "free " : "cut ") + std::to_string(i) + ".");
            }
            _exit(0);
        }
    }
    while (wait(nullptr) > 0) {
    }
    std::istringstream lines(m_folder.Read("logs/run.log"));
    int wanted = 0;
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(line.starts_with("2024/03/05 14:07:09 ") && line.ends_with(".\r")) << line;
        wanted += line.ends_with("free " + std::to_string(wanted) + ".\r") ? 1 : 0;
    }
    EXPECT_EQ(wanted, kLines);
}

} // namespace ruvo
