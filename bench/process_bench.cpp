// Whole processes: a start with a small INI file and nothing pending, next to a process that does nothing;
// day files as JSON and as CSV, next to a plain dump of their bytes; and a status over a long log, next to a
// search in it.
#include "tree.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace ruvo {

namespace {

/// Runs a program to its end with nowhere to write to; gives the processor time that it took.
double RunProcess(std::vector<std::string> arguments, std::vector<std::string> environment) {
    const auto pointers = [](std::vector<std::string>& texts) {
        std::vector<char*> all;
        for (std::string& text : texts) {
            all.push_back(text.data());
        }
        all.push_back(nullptr);
        return all;
    };
    const std::vector<char*> argv = pointers(arguments);
    const std::vector<char*> variables = pointers(environment);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    rusage usage{};
    pid_t child = 0;
    if (posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), variables.data()) == 0) {
        wait4(child, nullptr, 0, &usage);
    }
    posix_spawn_file_actions_destroy(&actions);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           1e-6 * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

void StartWithNothingPending(benchmark::State& state) {
    const CScratchFolder folder;
    folder.Write("substation.toml", "[link]\nserial = [\"COM1\"]\n[[relay]]\nserial = 5\n");
    folder.Write("site.ini",
                 "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("ev") + "\n[RUVO_SERIAL]\nRV001=5\n");
    double processor = 0;
    for (auto _ : state) {
        processor +=
            RunProcess({RUVO_BIN_DIR "/ruvo", folder.Native("site.ini")},
                       {"P32LS_SUBSTATION=" + folder.Native("substation.toml"),
                        "RUVO_LOCK_DIR=" + folder.Native(), "RUVO_STATE_DIR=" + folder.Native("state")});
    }
    state.counters["processor s"] = processor / static_cast<double>(state.iterations());
}
BENCHMARK(StartWithNothingPending)->UseRealTime();

void StartOfTrue(benchmark::State& state) {
    double processor = 0;
    for (auto _ : state) {
        processor += RunProcess({"/bin/true"}, {});
    }
    state.counters["processor s"] = processor / static_cast<double>(state.iterations());
}
BENCHMARK(StartOfTrue)->UseRealTime();

/// A log of a million lines, from twenty nights.
void WriteLongLog(const CScratchFolder& folder) {
    constexpr int kLines = 1'000'000;
    std::string text;
    for (int line = 0; line < kLines; ++line) {
        text += "2026/11/" + std::to_string(10 + line / 50'000) +
                " 02:00:07 A problem occured during events extraction. Connection details - COM Port: COM2, "
                "device address: " +
                std::to_string(line % 250) + ". P32LS status: P32LS Error - data error\r\n";
    }
    folder.Write("errors.log", text);
}

/// `command` with the log as its last argument.
void ReadLongLog(benchmark::State& state, std::vector<std::string> command) {
    const CScratchFolder folder;
    WriteLongLog(folder);
    if (command[1] == "status") { // of a folder of day files, here an empty one
        std::filesystem::create_directory(folder.Native("ev"));
        command.push_back(folder.Native("ev"));
    }
    command.push_back(folder.Native("errors.log"));
    for (auto _ : state) {
        state.SetIterationTime(RunProcess(command, {"RUVO_STATE_DIR=" + folder.Native("state")}));
    }
}
BENCHMARK_CAPTURE(ReadLongLog, status, {RUVO_BIN_DIR "/ruvoctl", "status", "--since", "2026-11-26"})
    ->UseManualTime();
BENCHMARK_CAPTURE(ReadLongLog, grep, {"/bin/grep", "-c", "occured.*250"})->UseManualTime();

constexpr int kTreeRelays = 10;
constexpr std::size_t kTreeEventsPerRelay = 2000;

std::vector<std::string> DayFiles(const CScratchFolder& folder) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Native("ev"))) {
        if (entry.path().extension() == ".evt") {
            files.push_back(entry.path());
        }
    }
    return files;
}

/// `command` on all files of a tree.
void ReadTree(benchmark::State& state, std::vector<std::string> command) {
    const CScratchFolder folder;
    bench::FillTree(folder, kTreeRelays, kTreeEventsPerRelay);
    std::ranges::copy(DayFiles(folder), std::back_inserter(command));
    for (auto _ : state) {
        state.SetIterationTime(RunProcess(command, {}));
    }
    state.counters["records/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kTreeRelays * kTreeEventsPerRelay,
                           benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(ReadTree, json, {RUVO_BIN_DIR "/ruvoctl", "events", "--format", "json"})->UseManualTime();
BENCHMARK_CAPTURE(ReadTree, csv, {RUVO_BIN_DIR "/ruvoctl", "events", "--format", "csv"})->UseManualTime();
BENCHMARK_CAPTURE(ReadTree, dump, {"/usr/bin/od", "-An", "-v", "-tx1"})->UseManualTime();

} // namespace

} // namespace ruvo
