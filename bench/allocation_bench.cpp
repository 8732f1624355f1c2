// How often an event asks for memory on its way from the server's reply to its file's bytes, next to what the
// reply itself needs; and how often writing the bytes does.
#include "instant_server.h"
#include "support/scratch_folder.h"

#include "extraction/relay_visit.h"
#include "link/client.h"
#include "model/records/event_record.h"
#include "model/values/parlane_integers.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <new>

namespace {

std::size_t g_allocations = 0; // one thread is all that a benchmark has

} // namespace

// Not to be inlined: compilers then take malloc and delete for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
    ++g_allocations;
    if (void* memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace ruvo {

namespace {

constexpr std::size_t kEvents = 10'000;

template <class TWork>
double AllocationsOf(const TWork& work) {
    const std::size_t before = g_allocations;
    work();
    return static_cast<double>(g_allocations - before);
}

void AllocationsPerEvent(benchmark::State& state, bench::EEventForm form) {
    const CScratchFolder folder;
    bench::CInstantServer& server = bench::InstantServer();
    server.form = form;
    CP32Wrap::CreateInstance();
    for (auto _ : state) {
        server.pending = kEvents;
        const double all =
            AllocationsOf([&folder] { ExtractEventsToFile(5, folder.Path("ev"), kNoEventLimit); });
        server.pending = kEvents;
        const double replies = AllocationsOf([&server] {
            for (std::size_t i = 0; i < kEvents; ++i) {
                Variant outputs[3];
                Variant status;
                benchmark::DoNotOptimize(
                    server.GetEvent(Variant(), outputs[0], outputs[1], outputs[2], status));
            }
        });
        state.counters["all"] = all / kEvents;
        state.counters["reply"] = replies / kEvents;
    }
    CP32Wrap::DestroyInstance();
}
BENCHMARK_CAPTURE(AllocationsPerEvent, simple, bench::EEventForm::Simple)->Iterations(1)->Repetitions(1);
BENCHMARK_CAPTURE(AllocationsPerEvent, extended, bench::EEventForm::Extended)->Iterations(1)->Repetitions(1);

/// The images of as many records, one after the other, in memory asked for beforehand.
void AllocationsOfImages(benchmark::State& state) {
    const CSimpleEventRecord record(0, 0, 5, CParlaneIEC870(), "Overcurrent I> Stage 1 Trip",
                                    std::make_unique<CParlaneUint>(7U, 1), "plant", "description", "model",
                                    0x1201, "Fault current %ld A", {});
    for (auto _ : state) {
        std::vector<std::uint8_t> bytes;
        bytes.reserve(kEvents * record.GetImageSize());
        state.counters["all"] = AllocationsOf([&] {
            for (std::size_t i = 0; i < kEvents; ++i) {
                record.Serialise(bytes);
            }
        });
        state.counters["records"] = kEvents;
    }
}
BENCHMARK(AllocationsOfImages)->Iterations(1)->Repetitions(1);

} // namespace

} // namespace ruvo
