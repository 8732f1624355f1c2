// Whole runs over many relays of 100 events each, every file flushed to disk: next to a bare loop that makes,
// writes and flushes the same files, and next to a run over one relay. Each run has a process of its own,
// whose memory and processor time the system reports.
#include "instant_server.h"
#include "support/scratch_folder.h"

#include "app/load_and_check.h"
#include "config/configuration.h"
#include "ledger/visit_record.h"
#include "link/client.h"
#include "run/extraction_run.h"
#include "run/run_end.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ruvo {

namespace {

constexpr std::size_t kEventsPerRelay = 100;
constexpr double kMicro = 1e-6;

struct SRunFigures {
    double seconds = 0;
    double processorSeconds = 0;
    double peakKiB = 0;   ///< resident at most, the benchmark program itself included
    double growthKiB = 0; ///< of it, what came on top during the run
};

/// A memory figure of this process in KiB, as the system reports it.
double MemoryFigure(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name)) {
            return std::stod(line.substr(name.size() + 1));
        }
    }
    return 0;
}

double ProcessorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           kMicro * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

std::string IniOf(const CScratchFolder& folder, int relays) {
    std::string text =
        "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("ev") + "\nUseEthernet=1\n[RUVO_ETHERNET]\n";
    for (int number = 0; number < relays; ++number) {
        text += RelayKey(number) + "=10.0." + std::to_string(number / 200) + "." +
                std::to_string(1 + number % 200) + ",5\n";
    }
    return folder.Write("site.ini", text);
}

/// What `work` costs in a child process.
template <class TWork>
SRunFigures MeasureInChild(const TWork& work) {
    SRunFigures figures;
    int channel[2];
    if (pipe(channel) != 0) {
        return figures;
    }
    const pid_t child = fork();
    if (child == 0) {
        std::ofstream("/proc/self/clear_refs") << 5; // the peak starts anew
        const double before = MemoryFigure("VmRSS");
        const double processorBefore = ProcessorSeconds();
        const auto start = std::chrono::steady_clock::now();
        work();
        figures.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        figures.processorSeconds = ProcessorSeconds() - processorBefore;
        figures.peakKiB = MemoryFigure("VmHWM");
        figures.growthKiB = figures.peakKiB - before;
        [[maybe_unused]] const auto sent = write(channel[1], &figures, sizeof figures);
        _exit(0);
    }
    [[maybe_unused]] const auto received = read(channel[0], &figures, sizeof figures);
    close(channel[0]);
    close(channel[1]);
    waitpid(child, nullptr, 0);
    return figures;
}

SRunFigures RunOver(int relays, const CScratchFolder& folder) {
    const std::string ini = IniOf(folder, relays);
    std::filesystem::create_directory(folder.Native("ev"));
    bench::InstantServer().pendingPerPort = kEventsPerRelay;
    bench::InstantServer().form = bench::EEventForm::Extended;
    return MeasureInChild([&] {
        setenv("RUVO_STATE_DIR", folder.Native("state").c_str(), 1); // on the disk that is measured
        CRunContext context;
        if (LoadAndCheck(context, ini, false) == EResultCode::Success &&
            CP32Wrap::CreateInstance() == kLinkGood) {
            CRunEnd end;
            CVisitRecord record(context.DestinationRoot(), ini);
            record.Begin();
            RunExtraction(context, end, &record);
            record.End({});
            CP32Wrap::DestroyInstance();
        }
    });
}

void FlushFolderOf(const std::filesystem::path& path) {
    const int opened = open(path.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    fsync(opened);
    close(opened);
}

enum class EFlushes : std::uint8_t { Files, AsInARun };

/// The day files that are there, once more and with the least that it takes; or with their bytes in a journal
/// before, and flushed as often as in a run: journal, file, and the names of file and folder.
SRunFigures WriteTheSameFiles(const CScratchFolder& folder, EFlushes flushes) {
    struct SFile {
        std::filesystem::path path;
        std::string bytes;
    };
    const bool isAsInARun = flushes == EFlushes::AsInARun;
    const std::filesystem::path copy = folder.Native(isAsInARun ? "copy with journal" : "copy");
    std::filesystem::create_directory(copy);
    std::vector<SFile> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Native("ev"))) {
        if (entry.path().extension() == ".evt") {
            files.push_back({copy / entry.path().parent_path().filename() / entry.path().filename(),
                             std::string(entry.file_size(), 'x')});
        }
    }
    return MeasureInChild([&] {
        const int journal =
            isAsInARun ? open((copy / "journal").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666) : -1;
        for (const SFile& file : files) {
            if (isAsInARun) {
                [[maybe_unused]] const auto kept = write(journal, file.bytes.data(), file.bytes.size());
                fdatasync(journal);
            }
            mkdir(file.path.parent_path().c_str(), 0777);
            const int opened = open(file.path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
            [[maybe_unused]] const auto written = write(opened, file.bytes.data(), file.bytes.size());
            fsync(opened);
            close(opened);
            if (isAsInARun) {
                FlushFolderOf(file.path);
                FlushFolderOf(file.path.parent_path());
            }
        }
        close(journal);
    });
}

std::size_t CountDayFiles(const CScratchFolder& folder) {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Native("ev"))) {
        count += entry.path().extension() == ".evt" ? 1 : 0;
    }
    return count;
}

void RunOver1000Relays(benchmark::State& state, const char* parent) {
    constexpr int kRelays = 1000;
    for (auto _ : state) {
        const CScratchFolder folder(parent != nullptr ? parent : std::filesystem::temp_directory_path());
        const SRunFigures run = RunOver(kRelays, folder);
        if (CountDayFiles(folder) != kRelays) {
            state.SkipWithError("not every relay has its day file");
            return;
        }
        const SRunFigures bare = WriteTheSameFiles(folder, EFlushes::Files);
        const SRunFigures flushed = WriteTheSameFiles(folder, EFlushes::AsInARun);
        state.counters["seconds"] = run.seconds;
        state.counters["bare seconds"] = bare.seconds;
        state.counters["bare seconds as often"] = flushed.seconds;
        state.counters["processor ms per visit"] = 1000 * run.processorSeconds / kRelays;
        state.counters["bare processor ms per visit"] = 1000 * bare.processorSeconds / kRelays;
        state.counters["peak KiB"] = run.peakKiB;
        state.counters["growth KiB"] = run.growthKiB;
        const CScratchFolder alone(parent != nullptr ? parent : std::filesystem::temp_directory_path());
        state.counters["growth of one KiB"] = RunOver(1, alone).growthKiB;
    }
}
BENCHMARK_CAPTURE(RunOver1000Relays, disk, nullptr)->Iterations(1)->Repetitions(1);
BENCHMARK_CAPTURE(RunOver1000Relays, memory, "/dev/shm")->Iterations(1)->Repetitions(3);

} // namespace

} // namespace ruvo
