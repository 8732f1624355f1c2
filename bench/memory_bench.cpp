// Memory of a run over 1000 relays of 200 events each, next to a run over one such relay. Each run has a
// process of its own, whose peak the system reports.
#include "instant_server.h"
#include "support/scratch_folder.h"

#include "eventfiles/event_extraction.h"
#include "link/p32_wrap.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace ruvo {

namespace {

constexpr std::size_t kEventsPerRelay = 200;

/// A memory figure of this process in KiB, as the system reports it.
long MemoryFigure(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name)) {
            return std::stol(line.substr(name.size() + 1));
        }
    }
    return 0;
}

/// How far the resident memory of a child that visits so many relays grows, in KiB.
long GrowthOfRun(int relays) {
    const CScratchFolder folder;
    int channel[2];
    if (pipe(channel) != 0) {
        return 0;
    }
    const pid_t child = fork();
    if (child == 0) {
        CP32Wrap::CreateInstance();
        std::ofstream("/proc/self/clear_refs") << 5; // the peak starts anew
        const long before = MemoryFigure("VmRSS");
        for (int relay = 0; relay < relays; ++relay) {
            bench::InstantServer().pending = kEventsPerRelay;
            ExtractEventsToFile(5, folder.Path() + "\\" + std::to_string(relay), kNoEventLimit);
        }
        const long growth = MemoryFigure("VmHWM") - before;
        [[maybe_unused]] const auto sent = write(channel[1], &growth, sizeof growth);
        _exit(0);
    }
    long growth = 0;
    [[maybe_unused]] const auto received = read(channel[0], &growth, sizeof growth);
    close(channel[0]);
    close(channel[1]);
    waitpid(child, nullptr, 0);
    return growth;
}

void MemoryOf1000RelaysOverOne(benchmark::State& state) {
    double one = 0;
    double many = 0;
    for (auto _ : state) {
        one = static_cast<double>(GrowthOfRun(1));
        many = static_cast<double>(GrowthOfRun(1000));
    }
    state.counters["one KiB"] = one;
    state.counters["1000 KiB"] = many;
    state.counters["ratio"] = many / one;
}
BENCHMARK(MemoryOf1000RelaysOverOne)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

} // namespace ruvo
