// A site's status in every form, out of a folder of day files and a log. Input: a byte (bits 0 to 2: how many
// day files, bit 3: no log, bit 4: names get no ending), each file's name and bytes behind their lengths, and
// the log.
#include "fuzz/support/input.h"
#include "fuzz/support/memory_system.h"
#include "fuzz/support/require.h"
#include "fuzz/support/text_checks.h"

#include "dayfile/day_file_reader.h"
#include "support/scratch_folder.h"
#include "tools/status/status_output.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace ruvo::fuzz {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr std::string_view kEnding = ".evt";

/// A folder whose names are on the disk, where they are looked for, and whose bytes are in memory.
class CSite {
public:
    CSite() {
        fs::create_directory(m_folder.Native("r"));
        for (fs::path path = m_folder.Native("r"); path.has_relative_path(); path = path.parent_path()) {
            m_folders.push_back("C:" + path.string());
            std::ranges::replace(m_folders.back(), '/', '\\');
        }
    }

    [[nodiscard]] std::string Root() const { return m_folder.Native(); }
    [[nodiscard]] std::string Log() const { return m_folder.Native("run.log"); }

    void Begin() {
        for (const std::string& path : m_files) {
            fs::remove(path);
        }
        m_files.clear();
        MemorySystem() = {};
        for (const std::string& folder : m_folders) {
            MemorySystem().AddFolder(folder);
        }
    }
    void AddDayFile(std::string name, std::string_view ending, std::span<const std::uint8_t> bytes) {
        constexpr std::size_t kLongest = 200;
        std::ranges::replace(name, '/', '_');
        std::ranges::replace(name, '\0', '_');
        name.resize(std::min(name.size(), kLongest));
        if (name.empty()) {
            return; // an ending alone is none
        }
        name += ending;
        const std::string path = m_folder.Native(m_files.size() % 2 == 0 ? "r/" + name : name);
        if (fs::exists(fs::symlink_status(path)) || !std::ofstream(path)) {
            return;
        }
        m_files.push_back(path);
        WriteMemory(path, bytes);
    }
    static void WriteMemory(const std::string& path, std::span<const std::uint8_t> bytes) {
        CFile file;
        std::size_t count = 0;
        if (file.Open(path, {.write = true, .create = true, .truncate = true}).Good()) {
            Require(file.Write(bytes, count).Good(), "memory takes all");
        }
    }
    /// Records and damaged places of all day files, read one by one.
    [[nodiscard]] std::pair<std::uint64_t, std::uint64_t> Totals() const {
        static CDayFileReader reader;
        std::pair<std::uint64_t, std::uint64_t> totals;
        for (const std::string& path : m_files) {
            if (!reader.Open(path).Good()) {
                continue;
            }
            for (SDayFileItem item; reader.Next(item);) {
                totals.first += item.record != nullptr ? 1 : 0;
                totals.second += item.damage ? 1 : 0;
            }
        }
        return totals;
    }

private:
    CScratchFolder m_folder;
    std::vector<std::string> m_folders; ///< as memory keeps them
    std::vector<std::string> m_files;
};

void CheckCounts(const SSiteStatus& status, const CSite& site) {
    std::pair<std::uint64_t, std::uint64_t> sums;
    for (const auto& [name, relay] : status.relays) {
        sums.first += relay.records;
        sums.second += relay.damaged;
        Require(relay.lastRecords <= relay.records && relay.freshDamaged <= relay.damaged,
                "a part is no more than all");
        Require(IsUtf8Text(name), "a relay's name is text");
    }
    Require(sums == site.Totals(), "every record and every damaged place is counted once");
}

void CheckLog(const SLogStatus& log) {
    std::uint64_t problems = 0;
    for (const auto& [name, group] : log.groups) {
        problems += group.problems;
    }
    Require(problems == log.problems && log.problems <= log.lines, "every problem belongs to somebody");
    Require(log.latest.size() == std::min<std::uint64_t>(log.problems, SLogStatus::kKeptLines),
            "the last are kept");
}

void CheckText(const std::string& text, EState state) {
    Require(IsUtf8Text(text) && HasNoControls(text) && text.ends_with('\n'), "the text is readable");
    static constexpr std::array<std::string_view, 4> kWords{"GOOD", "WARNING", "CRITICAL", "UNKNOWN"};
    Require(text.starts_with(kWords.at(static_cast<std::size_t>(state))), "the verdict comes first");
}

void CheckJson(const std::string& text, const SSiteStatus& status) {
    Require(IsUtf8Text(text) && HasNoControls(text) && std::ranges::count(text, '\n') == 1,
            "the JSON is one line");
    const Json json = Json::parse(text, nullptr, false);
    Require(json.is_object() && json["relays"].size() == status.relays.size() &&
                json["log"]["problems"] == status.log.problems,
            "the JSON says what is");
    auto relay = json["relays"].begin();
    for (const auto& [name, known] : status.relays) {
        Require((*relay)["relay"] == name && (*relay)["records"] == known.records, "each relay is there");
        ++relay;
    }
}

/// A label's value up to its closing quote; false when it has none.
bool TakeQuoted(std::string_view& text) {
    for (std::size_t at = 1; at < text.size() && text.starts_with('"'); ++at) {
        if (text[at] == '\\') {
            ++at;
        } else if (text[at] == '"') {
            text.remove_prefix(at + 1);
            return true;
        }
    }
    return false;
}

/// NAME{LABEL="VALUE",...} NUMBER
bool IsSample(std::string_view line) {
    constexpr std::string_view kNameChars = "abcdefghijklmnopqrstuvwxyz_";
    const auto takeName = [&](char mark) {
        const std::size_t end = std::min(line.find_first_not_of(kNameChars), line.size());
        const bool good = end > 0 && end < line.size() && line[end] == mark;
        line.remove_prefix(good ? end + 1 : 0);
        return good;
    };
    if (!takeName('{')) {
        return false;
    }
    do {
        if (!takeName('=') || !TakeQuoted(line) || line.empty()) {
            return false;
        }
        line.remove_prefix(line.front() == ',' ? 1 : 0);
    } while (!line.starts_with("} "));
    line.remove_prefix(2 + (line.substr(2).starts_with('-') ? 1U : 0U));
    return !line.empty() && line.find_first_not_of("0123456789") == std::string_view::npos;
}

void CheckMetrics(const std::string& text) {
    Require(IsUtf8Text(text) && HasNoControls(text) && text.ends_with('\n'), "metrics are text");
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        Require(line.starts_with("# HELP ruvo_") || line.starts_with("# TYPE ruvo_") || IsSample(line),
                "every line of the metrics is one");
    }
}

SSiteStatus Read(const CSite& site) {
    std::istringstream in;
    std::ostringstream stream;
    CTextOutput out(stream);
    CTextOutput error(stream);
    SConsole console{in, out, error};
    return ReadSiteStatus({.eventRoot = site.Root(),
                           .logPath = site.Log(),
                           .iniPath = {},
                           .since = "2026-11-15T00:00:00",
                           .expected = {"AB12-001", "\xC3\xBC\""}},
                          console);
}

void Check(CInput input) {
    static CSite site;
    site.Begin();
    const unsigned options = input.TakeByte();
    const std::string_view ending = (options & 16U) != 0 ? std::string_view() : kEnding;
    for (unsigned count = options & 7U; count > 0; --count) {
        std::string name = input.TakeText();
        site.AddDayFile(std::move(name), ending, input.TakeBytes(input.TakeWord() % 1024U));
    }
    if ((options & 8U) == 0) {
        CSite::WriteMemory(site.Log(), input.Rest());
    }
    SSiteReport report = {.name = "site \"\\\n", .ini = {}, .status = Read(site), .verdict = {}};
    const SSiteStatus& status = report.status;
    if (!ending.empty()) {
        CheckCounts(status, site);
    }
    CheckLog(status.log);
    report.verdict = Evaluate(status, {});
    const SVerdict& verdict = report.verdict;
    Require(verdict.state == (verdict.causes.empty() ? EState::Good : verdict.causes.front().state),
            "the worst comes first");
    CheckText(StatusAsText(status, verdict), verdict.state);
    CheckJson(StatusAsJson(status, verdict), status);
    CheckMetrics(StatusAsMetrics({&report, 1}, MemorySystem().unixSeconds));
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check(ruvo::fuzz::CInput({data, size}));
    return 0;
}
