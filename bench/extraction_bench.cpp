// Extraction over the direct seam, next to copying the same bytes and writing them.
#include "instant_server.h"
#include "support/scratch_folder.h"

#include "extraction/relay_visit.h"
#include "ledger/visit_custody.h"
#include "link/client.h"
#include "platform/files.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>

namespace ruvo {

namespace {

class CInstantConnection final : public IServerConnection {
public:
    IP32ls& Server() override { return bench::InstantServer(); }
    bool Advise(IP32lsSink_v2&, std::uint32_t& cookie) override {
        cookie = 1;
        return true;
    }
    void Unadvise(std::uint32_t) override {}
};

} // namespace

bench::CInstantServer& bench::InstantServer() {
    static CInstantServer server;
    return server;
}

std::unique_ptr<IServerConnection> ConnectToServer() {
    return std::make_unique<CInstantConnection>();
}

namespace {

constexpr std::size_t kEvents = 20'000;

void ExtractEvents(benchmark::State& state, bench::EEventForm form) {
    const CScratchFolder folder;
    CP32Wrap::CreateInstance();
    for (auto _ : state) {
        bench::InstantServer().pending = kEvents;
        bench::InstantServer().form = form;
        ExtractEventsToFile(5, folder.Path("ev"), kNoEventLimit);
        state.PauseTiming();
        std::filesystem::remove_all(folder.Native("ev"));
        state.ResumeTiming();
    }
    CP32Wrap::DestroyInstance();
    state.counters["events/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kEvents, benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(ExtractEvents, simple, bench::EEventForm::Simple);
BENCHMARK_CAPTURE(ExtractEvents, extended, bench::EEventForm::Extended);

/// The same through the journal of a run; the journal and the day file are in one folder.
void ExtractEventsWithJournal(benchmark::State& state, const char* parent) {
    const CScratchFolder folder(parent != nullptr ? parent : std::filesystem::temp_directory_path());
    setenv("RUVO_STATE_DIR", folder.Native("state").c_str(), 1);
    CP32Wrap::CreateInstance();
    CRunLedger ledger(folder.Path("ev"), [](const SLedgerReport&) {});
    for (auto _ : state) {
        bench::InstantServer().pending = kEvents;
        bench::InstantServer().form = bench::EEventForm::Extended;
        CVisitCustody custody(&ledger, "RV001");
        SExtractionReport report;
        ExtractEventsToFile(5, folder.Path("ev"), kNoEventLimit, &report, {}, &custody);
        custody.End();
        state.PauseTiming();
        if (report.recordsWritten != kEvents || ledger.Journal() == nullptr) {
            state.SkipWithError("not every event went through the journal");
        }
        std::filesystem::remove_all(folder.Native("ev"));
        state.ResumeTiming();
    }
    CP32Wrap::DestroyInstance();
    unsetenv("RUVO_STATE_DIR");
    state.counters["events/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kEvents, benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(ExtractEventsWithJournal, disk, nullptr)->UseRealTime();
BENCHMARK_CAPTURE(ExtractEventsWithJournal, memory, "/dev/shm")->UseRealTime();

/// The bytes of as many events, copied from the server's reply into one buffer and written to a file.
void CopyTheSameBytes(benchmark::State& state) {
    constexpr std::size_t kEventBytes = 104; // as long as the records of both forms
    const CScratchFolder folder;
    const std::vector<std::uint8_t> event(kEventBytes, 'x');
    for (auto _ : state) {
        std::vector<std::uint8_t> all;
        for (std::size_t i = 0; i < kEvents; ++i) {
            const Variant reply = Variant::FromBytes(event);
            all.insert(all.end(), reply.AsBytes()->begin(), reply.AsBytes()->end());
        }
        CFile file;
        std::size_t written = 0;
        benchmark::DoNotOptimize(
            file.Open(folder.Path("f"), {.write = true, .create = true, .truncate = true}));
        benchmark::DoNotOptimize(file.Write(all, written));
        benchmark::DoNotOptimize(file.FlushToDisk());
    }
    state.counters["events/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kEvents, benchmark::Counter::kIsRate);
}
BENCHMARK(CopyTheSameBytes);

} // namespace

} // namespace ruvo
