// The formatter's conversions, each next to the C library's nearest one.
#include "model/format/formatter.h"
#include "model/format/locale_record.h"
#include "model/values/parlane_number.h"
#include "model/values/parlane_time.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <ctime>

namespace ruvo {

namespace {

void Format(benchmark::State& state, const char* format, const CParlaneData& value) {
    char buffer[64];
    for (auto _ : state) {
        bool good = true;
        benchmark::DoNotOptimize(
            FormatValue(&GetCurrentLocale(), buffer, sizeof buffer, format, &value, good));
        benchmark::ClobberMemory();
    }
}

void PrintNative(benchmark::State& state, const char* format, double value) {
    char buffer[64];
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::snprintf(buffer, sizeof buffer, format, value));
        benchmark::ClobberMemory();
    }
}

void PrintTime(benchmark::State& state) {
    char buffer[64];
    std::time_t when = 1'707'138'429;
    for (auto _ : state) {
        std::tm fields{};
        gmtime_r(&when, &fields);
        char text[48];
        std::strftime(text, sizeof text, "%A %d %B %Y %H:%M:%S", &fields);
        benchmark::DoNotOptimize(std::snprintf(buffer, sizeof buffer, "%s.%03d GMT", text, 45));
        benchmark::ClobberMemory();
    }
}

const CParlaneNumber kNumber(1523.0, 0, ENumberForm::Short);
const CParlaneNumber kLongNumber(123456.789, 0, ENumberForm::Long);
const CParlaneFloat kFloat(49.87F);
const CParlaneIEC870 kTime(CParlaneIEC870::Octets{0x55, 0x23, 0x07, 0x0D, 0x25, 0x02, 0x18});

BENCHMARK_CAPTURE(Format, k, "%k", kNumber);
BENCHMARK_CAPTURE(PrintNative, k_as_engineering, "%9.4g A", 1523.0);
BENCHMARK_CAPTURE(Format, long_k, "%lk", kLongNumber);
BENCHMARK_CAPTURE(PrintNative, long_k_as_engineering, "%14.9g A", 123456.789);
BENCHMARK_CAPTURE(Format, f, "%f", kFloat);
BENCHMARK_CAPTURE(PrintNative, f, "%f", 49.87);
BENCHMARK_CAPTURE(Format, e, "%e", kFloat);
BENCHMARK_CAPTURE(PrintNative, e, "%.3e", 49.87);
BENCHMARK_CAPTURE(Format, tl, "%lt", kTime);
BENCHMARK(PrintTime);

} // namespace

} // namespace ruvo
