// A whole process with a small INI file and nothing pending, next to a process that does nothing.
#include "support/scratch_folder.h"

#include <benchmark/benchmark.h>

#include <spawn.h>
#include <sys/wait.h>

namespace ruvo {

namespace {

void RunProcess(const std::string& program, const std::string& argument,
                const std::vector<std::string>& environment) {
    std::vector<char*> variables;
    for (const std::string& variable : environment) {
        variables.push_back(const_cast<char*>(variable.c_str()));
    }
    variables.push_back(nullptr);
    char* arguments[] = {const_cast<char*>(program.c_str()), const_cast<char*>(argument.c_str()), nullptr};
    pid_t child = 0;
    if (posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, variables.data()) == 0) {
        waitpid(child, nullptr, 0);
    }
}

void StartWithNothingPending(benchmark::State& state) {
    const CScratchFolder folder;
    folder.Write("substation.toml", "[link]\nserial = [\"COM1\"]\n[[relay]]\nserial = 5\n");
    folder.Write("site.ini",
                 "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("ev") + "\n[RUVO_SERIAL]\nRV001=5\n");
    for (auto _ : state) {
        RunProcess(
            RUVO_BIN_DIR "/ruvo", folder.Native("site.ini"),
            {"P32LS_SUBSTATION=" + folder.Native("substation.toml"), "RUVO_LOCK_DIR=" + folder.Native()});
    }
}
BENCHMARK(StartWithNothingPending)->Unit(benchmark::kMillisecond)->UseRealTime();

void StartOfTrue(benchmark::State& state) {
    for (auto _ : state) {
        RunProcess("/bin/true", "", {});
    }
}
BENCHMARK(StartOfTrue)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

} // namespace ruvo
