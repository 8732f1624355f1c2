// What a recording adds to requests that take a millisecond each, as a quick relay's do.
#include "instant_server.h"
#include "support/scratch_folder.h"

#include "link/recording/recorded_connection.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <vector>

namespace ruvo {

namespace {

using Clock = std::chrono::steady_clock;

/// Answers an event after a millisecond, as if a relay had to be asked.
class CPatientServer final : public CUniformServer {
public:
    CPatientServer() {
        bench::InstantServer().form = bench::EEventForm::Extended;
        bench::InstantServer().pending = SIZE_MAX;
    }
    EComResult Call(EOperation operation, Inputs inputs, Outputs outputs, Variant& status) override {
        constexpr std::chrono::milliseconds kAnswerTime(1);
        // Not asleep: how late the system wakes a thread would hide what is measured.
        for (const auto begin = Clock::now(); Clock::now() - begin < kAnswerTime;) {
        }
        return bench::InstantServer().Call(operation, inputs, outputs, status);
    }
};

class CPatientConnection final : public IServerConnection {
public:
    IP32ls& Server() override { return m_server; }
    bool Advise(IP32lsSink_v2& /*sink*/, std::uint32_t& /*cookie*/) override { return true; }
    void Unadvise(std::uint32_t /*cookie*/) override {}

private:
    CPatientServer m_server;
};

double MicrosecondsOfAnEvent(IP32ls& server) {
    std::array<Variant, 4> outputs;
    const auto begin = Clock::now();
    benchmark::DoNotOptimize(
        server.GetEvent(Variant::FromUI1(5), outputs[0], outputs[1], outputs[2], outputs[3]));
    return std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
}

double Median(std::vector<double>& times) {
    std::ranges::sort(times);
    return times[times.size() / 2];
}

/// In turns, so that both get the same of whatever else the machine does.
void RecordRequests(benchmark::State& state) {
    constexpr std::size_t kPairs = 300;
    const CScratchFolder folder;
    PlannedRecording().path = folder.Path("bench.rec");
    PlannedRecording().leastFree = 1; // looked at as in a run
    const auto recorded = RecordedAsPlanned(std::make_unique<CPatientConnection>());
    PlannedRecording() = {};
    CPatientConnection plain;
    for (auto _ : state) {
        std::vector<double> plainTimes;
        std::vector<double> recordedTimes;
        for (std::size_t i = 0; i < kPairs; ++i) {
            plainTimes.push_back(MicrosecondsOfAnEvent(plain.Server()));
            recordedTimes.push_back(MicrosecondsOfAnEvent(recorded->Server()));
        }
        state.counters["plain us"] = Median(plainTimes);
        state.counters["recorded us"] = Median(recordedTimes);
    }
}
BENCHMARK(RecordRequests)->Iterations(1)->UseRealTime();

} // namespace

} // namespace ruvo
