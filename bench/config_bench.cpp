// Load and check of an INI file with 1000 entries in every section, next to a reader that opens and parses
// the file anew for every question.
#include "support/scratch_folder.h"

#include "app/load_and_check.h"
#include "config/configuration.h"
#include "config/scramble.h"
#include "platform/profile.h"

#include <benchmark/benchmark.h>

namespace ruvo {

namespace {

std::string FullIni(const CScratchFolder& folder) {
    std::string text = "[RUVO_GENERAL]\r\nEventRootDir=" + folder.Path("ev") + "\r\nUseEthernet=1\r\n";
    char scrambled[kScrambledLength + 1];
    ScramblePassword("PASSWORD", scrambled);
    const std::pair<std::string_view, std::string> sections[] = {{kSerialSection, "5"},
                                                                 {kModemSection, "6"},
                                                                 {kEthernetSection, "10.0.0.5,12,3"},
                                                                 {kPasswordsSection, scrambled}};
    for (const auto& [section, value] : sections) {
        text += "[" + std::string(section) + "]\r\n";
        for (int number = 0; number < kRelayKeyCount; ++number) {
            text += RelayKey(number) + "=" + value + "\r\n";
        }
    }
    return folder.Write("full.ini", text);
}

void LoadAndCheckFullIni(benchmark::State& state) {
    const CScratchFolder folder;
    const std::string path = FullIni(folder);
    for (auto _ : state) {
        CRunContext context;
        if (LoadAndCheck(context, path, true) != EResultCode::Success) {
            state.SkipWithError("the file does not pass");
        }
    }
}
BENCHMARK(LoadAndCheckFullIni);

/// As many questions as loading asks, and one copy less than the duplicate test would make.
void ReadFullIniAnewForEveryKey(benchmark::State& state) {
    const CScratchFolder folder;
    const std::string path = FullIni(folder);
    for (auto _ : state) {
        for (const std::string_view section :
             {kSerialSection, kModemSection, kEthernetSection, kPasswordsSection}) {
            for (int number = 0; number < kRelayKeyCount; ++number) {
                const CProfileReader reader(path);
                benchmark::DoNotOptimize(reader.ReadString(section, RelayKey(number), "", 301));
            }
        }
    }
}
BENCHMARK(ReadFullIniAnewForEveryKey)->Iterations(1)->Repetitions(1);

} // namespace

} // namespace ruvo
