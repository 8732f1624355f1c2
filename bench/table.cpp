// Runs the benchmarks and prints them as one table: each figure beside the least work that the task requires,
// or beside another library's, measured in the same run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

namespace {

constexpr std::string_view kCpu = "cpu";   ///< processor time of an iteration
constexpr std::string_view kReal = "real"; ///< time on the clock of an iteration
constexpr double kMilli = 1e3;
constexpr double kNano = 1e9;

/// A benchmark's time or one of its counters, and what to multiply it by.
struct SSource {
    std::string_view benchmark;
    std::string_view figure;
    double scale = 1;
};

enum class EAim : std::uint8_t { None, AtMost, AtLeast, RatioAtMost, RatioAtLeast };

struct SRow {
    std::string_view what;
    std::string_view unit;
    SSource ours;
    std::string_view beside;
    SSource others;
    EAim aim = EAim::None;
    double limit = 0;
};

constexpr std::string_view kDisk = "RunOver1000Relays/disk";
constexpr std::string_view kMemory = "RunOver1000Relays/memory";

constexpr std::array kRows{
    SRow{"extract simple events",
         "events/s",
         {"ExtractEvents/simple", "events/s"},
         "copy the same bytes",
         {"CopyTheSameBytes", "events/s"},
         EAim::AtLeast,
         200'000},
    SRow{"extract extended events",
         "events/s",
         {"ExtractEvents/extended", "events/s"},
         "copy the same bytes",
         {"CopyTheSameBytes", "events/s"},
         EAim::AtLeast,
         200'000},
    SRow{"the same with a journal, disk",
         "events/s",
         {"ExtractEventsWithJournal/disk", "events/s"},
         "copy the same bytes",
         {"CopyTheSameBytes", "events/s"},
         EAim::AtLeast,
         500'000},
    SRow{"the same with a journal, memory",
         "events/s",
         {"ExtractEventsWithJournal/memory", "events/s"},
         "copy the same bytes",
         {"CopyTheSameBytes", "events/s"},
         EAim::AtLeast,
         500'000},
    SRow{"allocations, a simple event",
         "",
         {"AllocationsPerEvent/simple", "all"},
         "the server's reply alone",
         {"AllocationsPerEvent/simple", "reply"}},
    SRow{"allocations, an extended event",
         "",
         {"AllocationsPerEvent/extended", "all"},
         "the server's reply alone",
         {"AllocationsPerEvent/extended", "reply"}},
    SRow{"allocations, writing records",
         "",
         {"AllocationsOfImages", "all"},
         "records written",
         {"AllocationsOfImages", "records"},
         EAim::AtMost,
         0},
    SRow{"1000 relays of 100 events, disk",
         "s",
         {kDisk, "seconds"},
         "bare loop, same files",
         {kDisk, "bare seconds"},
         EAim::AtMost,
         2},
    SRow{"the same beside as many flushes",
         "s",
         {kDisk, "seconds"},
         "bare loop, with a journal",
         {kDisk, "bare seconds as often"},
         EAim::RatioAtMost,
         1.5},
    SRow{"the same where a flush is free",
         "s",
         {kMemory, "seconds"},
         "bare loop, same files",
         {kMemory, "bare seconds"},
         EAim::AtMost,
         2},
    SRow{"processor time of a visit",
         "ms",
         {kDisk, "processor ms per visit"},
         "bare loop, same files",
         {kDisk, "bare processor ms per visit"},
         EAim::AtMost,
         5},
    SRow{"memory of 1000 relays, in all",
         "MiB",
         {kDisk, "peak KiB", 1.0 / 1024},
         "what the run adds",
         {kDisk, "growth KiB", 1.0 / 1024},
         EAim::AtMost,
         32},
    SRow{"memory that 1000 relays add",
         "KiB",
         {kDisk, "growth KiB"},
         "one relay",
         {kDisk, "growth of one KiB"},
         EAim::RatioAtMost,
         2},
    SRow{"a request of 1 ms, recorded",
         "us",
         {"RecordRequests", "recorded us"},
         "not recorded",
         {"RecordRequests", "plain us"},
         EAim::RatioAtMost,
         1.02},
    SRow{"load and check a full INI file",
         "ms",
         {"LoadAndCheckFullIni", kCpu, kMilli},
         "read anew for every key",
         {"ReadFullIniAnewForEveryKey", kCpu, kMilli},
         EAim::AtMost,
         10},
    SRow{"start, nothing pending",
         "ms",
         {"StartWithNothingPending", kReal, kMilli},
         "/bin/true",
         {"StartOfTrue", kReal, kMilli},
         EAim::AtMost,
         2},
    SRow{"the same beside /bin/true",
         "ms",
         {"StartWithNothingPending", kReal, kMilli},
         "/bin/true",
         {"StartOfTrue", kReal, kMilli},
         EAim::RatioAtMost,
         3},
    SRow{"processor time of that start",
         "ms",
         {"StartWithNothingPending", "processor s", kMilli},
         "/bin/true",
         {"StartOfTrue", "processor s", kMilli}},
    SRow{"status over a million log lines",
         "ms",
         {"ReadLongLog/status", kReal, kMilli},
         "grep over them",
         {"ReadLongLog/grep", kReal, kMilli},
         EAim::AtMost,
         200},
    SRow{"show day files as JSON",
         "records/s",
         {"ReadTree/json", "records/s"},
         "od, their bytes in hex",
         {"ReadTree/dump", "records/s"},
         EAim::AtLeast,
         1'000'000},
    SRow{"show day files as CSV",
         "records/s",
         {"ReadTree/csv", "records/s"},
         "the same as JSON",
         {"ReadTree/json", "records/s"},
         EAim::RatioAtLeast,
         1},
    SRow{"archive 100,000 records, new",
         "s",
         {"FillNewArchive", kCpu},
         "import as plain text",
         {"ImportAsPlainText", kCpu},
         EAim::AtMost,
         1},
    SRow{"size of that archive",
         "MiB",
         {"FillNewArchive", "archive MiB"},
         "its day files",
         {"FillNewArchive", "day files MiB"},
         EAim::RatioAtMost,
         3},
    SRow{"format %k",
         "ns",
         {"Format/k", kCpu, kNano},
         "snprintf",
         {"PrintNative/k_as_engineering", kCpu, kNano},
         EAim::RatioAtMost,
         1},
    SRow{"format %lk",
         "ns",
         {"Format/long_k", kCpu, kNano},
         "snprintf",
         {"PrintNative/long_k_as_engineering", kCpu, kNano},
         EAim::RatioAtMost,
         1},
    SRow{"format %f",
         "ns",
         {"Format/f", kCpu, kNano},
         "snprintf",
         {"PrintNative/f", kCpu, kNano},
         EAim::RatioAtMost,
         1},
    SRow{"format %e",
         "ns",
         {"Format/e", kCpu, kNano},
         "snprintf",
         {"PrintNative/e", kCpu, kNano},
         EAim::RatioAtMost,
         1},
    SRow{"format %lt", "ns", {"Format/tl", kCpu, kNano}, "strftime, snprintf", {"PrintTime", kCpu, kNano}},
};

/// Keeps what each repetition of each benchmark measured.
class CCollector final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& /*context*/) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str());
                m_failed = true;
            } else if (run.run_type == Run::RT_Iteration) {
                Keep(run);
            }
        }
    }
    bool HasFailed() const { return m_failed; }

    /// The median over the repetitions; negative for what was not measured.
    double Median(const SSource& source) const {
        const auto found = m_values.find(std::string(source.benchmark) + " " + std::string(source.figure));
        if (found == m_values.end()) {
            return -1;
        }
        std::vector<double> sorted = found->second;
        std::ranges::sort(sorted);
        return sorted[sorted.size() / 2] * source.scale;
    }

private:
    void Keep(const Run& run) {
        const std::string name = run.run_name.function_name + " ";
        const double iterations = static_cast<double>(run.iterations);
        m_values[name + std::string(kCpu)].push_back(run.cpu_accumulated_time / iterations);
        m_values[name + std::string(kReal)].push_back(run.real_accumulated_time / iterations);
        for (const auto& [counter, value] : run.counters) {
            m_values[name + counter].push_back(value);
        }
    }

    std::map<std::string, std::vector<double>> m_values;
    bool m_failed = false;
};

/// Three digits of a number, thousands and millions as "k" and "M".
std::string Rounded(double number) {
    struct SPrefix {
        double factor;
        const char* letter;
    };
    static constexpr std::array kPrefixes{SPrefix{1e6, " M"}, SPrefix{1e3, " k"}, SPrefix{1, ""}};
    const auto* const prefix = std::ranges::find_if(
        kPrefixes, [number](const SPrefix& row) { return number >= 10 * row.factor || row.factor == 1; });
    const double shown = number / prefix->factor;
    char text[32];
    std::snprintf(text, sizeof text, "%.*f%s", shown < 10 ? 2 : shown < 100 ? 1 : 0, shown, prefix->letter);
    return text;
}

std::string AimText(const SRow& row) {
    switch (row.aim) {
    case EAim::AtMost:
        return "<= " + Rounded(row.limit);
    case EAim::AtLeast:
        return ">= " + Rounded(row.limit);
    case EAim::RatioAtMost:
        return "ratio <= " + Rounded(row.limit);
    case EAim::RatioAtLeast:
        return "ratio >= " + Rounded(row.limit);
    case EAim::None:
        break;
    }
    return "-";
}

bool IsMet(const SRow& row, double figure, double ratio) {
    const bool isOfRatio = row.aim == EAim::RatioAtMost || row.aim == EAim::RatioAtLeast;
    const bool isAtMost = row.aim == EAim::RatioAtMost || row.aim == EAim::AtMost;
    const double judged = isOfRatio ? ratio : figure;
    return isAtMost ? judged <= row.limit : judged >= row.limit;
}

/// Where the least possible work misses the aim too, the machine is too slow.
std::string MetText(const SRow& row, double ours, double others) {
    if (row.aim == EAim::None) {
        return "-";
    }
    if (IsMet(row, ours, ours / others)) {
        return "yes";
    }
    return row.aim == EAim::AtMost && others > row.limit ? "NO, nor what is beside it" : "NO";
}

void PrintLine(std::string_view what, const std::string& figure, const std::string& beside,
               std::string_view besideWhat, const std::string& ratio, const std::string& aim,
               const std::string& met) {
    std::printf("%-32.*s %18s %12s  %-24.*s %8s  %-14s %s\n", static_cast<int>(what.size()), what.data(),
                figure.c_str(), beside.c_str(), static_cast<int>(besideWhat.size()), besideWhat.data(),
                ratio.c_str(), aim.c_str(), met.c_str());
}

void PrintTable(const CCollector& collected) {
    PrintLine("what", "figure", "beside it", "(what that is)", "ratio", "aim", "met?");
    for (const SRow& row : kRows) {
        const double ours = collected.Median(row.ours);
        const double others = collected.Median(row.others);
        if (ours < 0 || others <= 0) {
            continue; // a filter left it out
        }
        const double ratio = ours / others;
        PrintLine(row.what, Rounded(ours) + " " + std::string(row.unit), Rounded(others), row.beside,
                  ratio > 0 && ratio < 0.01 ? "< 0.01" : Rounded(ratio), AimText(row),
                  MetText(row, ours, others));
    }
}

} // namespace

} // namespace ruvo

int main(int argumentCount, char** arguments) {
    // Both halves of a pair get their share of whatever else the machine does. The caller's options win.
    std::string defaults[] = {"--benchmark_repetitions=5", "--benchmark_enable_random_interleaving=true",
                              "--benchmark_min_time=0.1"};
    std::vector<char*> all{arguments[0]};
    for (std::string& option : defaults) {
        all.push_back(option.data());
    }
    all.insert(all.end(), arguments + 1, arguments + argumentCount);
    int count = static_cast<int>(all.size());
    all.push_back(nullptr);
    benchmark::Initialize(&count, all.data());
    if (benchmark::ReportUnrecognizedArguments(count, all.data())) {
        return 2;
    }
    ruvo::CCollector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    ruvo::PrintTable(collector);
    return collector.HasFailed() ? 1 : 0;
}
