// Many records into a new archive, next to an import of the same rows as plain text into a table without any
// index, by the same library.
#include "tree.h"

#include "tools/archive/database.h"
#include "tools/command_line.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace ruvo {

namespace {

constexpr int kRelays = 10;
constexpr std::size_t kEventsPerRelay = 10'000;
constexpr double kMebi = 1024.0 * 1024.0;
constexpr const char* kRows =
    "SELECT e.site, e.relay, e.day_file, e.byte_offset, e.kind, e.unique_id, e.event_code, e.time, "
    "e.time_invalid, e.summer_time, e.location, e.event, e.text, e.value, e.plant, e.description, e.model, "
    "e.cells, hex(r.bytes) FROM events e JOIN records r ON r.id = e.id ORDER BY e.id";
constexpr int kColumns = 19;

void Archive(const CScratchFolder& folder) {
    std::ostringstream discarded;
    CTextOutput out(discarded);
    SConsole console{.in = std::cin, .out = out, .error = out};
    RunCommandLine(
        std::vector<std::string>{"archive", folder.Native("ev"), "--sqlite", folder.Native("a.db")}, console);
}

double MebiBytesOf(const std::filesystem::path& place) {
    double bytes = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(place)) {
        bytes += entry.is_regular_file() ? static_cast<double>(entry.file_size()) : 0;
    }
    return bytes / kMebi;
}

void FillNewArchive(benchmark::State& state) {
    const CScratchFolder folder;
    bench::FillTree(folder, kRelays, kEventsPerRelay);
    for (auto _ : state) {
        std::filesystem::remove(folder.Native("a.db"));
        Archive(folder);
    }
    state.counters["day files MiB"] = MebiBytesOf(folder.Native("ev"));
    state.counters["archive MiB"] =
        static_cast<double>(std::filesystem::file_size(folder.Native("a.db"))) / kMebi;
}
BENCHMARK(FillNewArchive);

/// In few pieces of memory, which the system gets back: other benchmarks measure memory.
struct STexts {
    std::string all;
    std::vector<std::size_t> ends;
};

STexts TextsOfRows(const CScratchFolder& folder) {
    bench::FillTree(folder, kRelays, kEventsPerRelay);
    Archive(folder);
    CDatabase archive(folder.Native("a.db"), EDatabaseAccess::Read);
    CStatement rows(archive, kRows);
    STexts texts;
    while (rows.Step()) {
        for (int column = 0; column < kColumns; ++column) {
            texts.all += rows.TextAt(column);
            texts.ends.push_back(texts.all.size());
        }
    }
    return texts;
}

void ImportAsPlainText(benchmark::State& state) {
    const CScratchFolder folder;
    const STexts texts = TextsOfRows(folder);
    for (auto _ : state) {
        std::filesystem::remove(folder.Native("plain.db"));
        CDatabase plain(folder.Native("plain.db"), EDatabaseAccess::Write);
        plain.Run("CREATE TABLE rows (a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s); BEGIN");
        CStatement put(plain,
                       "INSERT INTO rows VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
        std::size_t begin = 0;
        for (std::size_t at = 0; at < texts.ends.size();) {
            for (int column = 0; column < kColumns; ++column) {
                const std::size_t end = texts.ends[at++];
                put.Bind(std::string_view(texts.all).substr(begin, end - begin));
                begin = end;
            }
            put.Step();
            put.Rewind();
        }
        plain.Run("COMMIT");
    }
}
BENCHMARK(ImportAsPlainText);

} // namespace

} // namespace ruvo
