// The data of a report, unpacked as its page does, and the page. Input: a byte for the log's size in eighths,
// the log, and two day files of the same size.
#include "fuzz/support/input.h"
#include "fuzz/support/memory_system.h"
#include "fuzz/support/require.h"
#include "fuzz/support/text_checks.h"

#include "dayfile/day_file_reader.h"
#include "tools/clocks/shown_time.h"
#include "tools/report/event_kind.h"
#include "tools/report/report_data.h"
#include "tools/report/report_page.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <tuple>

namespace ruvo::fuzz {

namespace {

using Json = nlohmann::json;

const std::array<SEventSource, 2> kSources{SEventSource{"C\xC3\xB6\"d\\e,.evt", "AB12-\xE2\x82\xAC"},
                                           SEventSource{"</script>.evt", "CD"}};

/// An event by what is told of it as numbers: file, offset, id.
using Place = std::tuple<std::size_t, std::uint64_t, std::uint32_t>;

struct SGathered {
    CReportData data;
    std::vector<Place> places;
    std::size_t damage = 0;
    std::size_t problems = 0;
};

void TakeLog(SGathered& gathered, std::span<const std::uint8_t> bytes) {
    static CLogReader reader;
    MemorySystem().AddFile("C:\\run.log", {bytes.begin(), bytes.end()});
    Require(reader.Open("C:\\run.log").Good(), "the log opens");
    for (SLogLine line; reader.Next(line); ++gathered.problems) {
        gathered.data.AddProblem(line, 0);
    }
}

void TakeDayFile(SGathered& gathered, std::size_t file, std::span<const std::uint8_t> bytes) {
    static CDayFileReader reader;
    const SEventSource& source = kSources.at(file);
    gathered.data.AddRelay(source.relay);
    MemorySystem().AddFile("C:\\day.evt", {bytes.begin(), bytes.end()});
    Require(reader.Open("C:\\day.evt").Good(), "the file opens");
    for (SDayFileItem item; reader.Next(item);) {
        if (item.record != nullptr) {
            gathered.data.AddRecord(source, item, ShowStamp(item.record->GetTimeStamp(), nullptr, nullptr));
            gathered.places.emplace_back(file, item.offset, item.record->GetUniqueId());
        }
        if (item.damage) {
            gathered.data.AddDamage(source, *item.damage);
            ++gathered.damage;
        }
    }
}

/// A list of indexes into something of that size.
void CheckIndexes(const Json& list, std::size_t size) {
    Require(
        std::ranges::all_of(list, [size](const Json& index) { return index.get<std::uint64_t>() < size; }),
        "an index leads to something");
}

/// What events have in common: six texts and the kind before code and flags, in the page's order.
void CheckShapes(const Json& report) {
    constexpr std::size_t kColumns = 8;
    constexpr std::size_t kKindColumn = 1;
    const std::size_t texts = report["texts"].size();
    for (const Json& shape : report["shapes"]) {
        Require(shape.size() == kColumns, "a shape has its columns");
        CheckIndexes({shape[0], shape[2], shape[3], shape[4], shape[5]}, texts);
        Require(shape[kKindColumn].get<std::size_t>() < report["kinds"].size(), "a kind has a name");
    }
    for (const Json& list : report["lists"]) {
        CheckIndexes(list, texts);
        Require(list.size() % 2 == 0, "labels and values come in pairs");
    }
}

/// Adds up differences within each file.
std::vector<std::int64_t> Summed(const Json& differences, const Json& files, std::size_t fileCount) {
    std::vector<std::int64_t> last(fileCount);
    std::vector<std::int64_t> numbers;
    for (std::size_t i = 0; i < differences.size(); ++i) {
        numbers.push_back(last.at(files[i].get<std::size_t>()) += differences[i].get<std::int64_t>());
    }
    return numbers;
}

void CheckTimes(const Json& events, std::size_t texts) {
    const Json& times = events["time"];
    const auto timed = events["timed"].get<std::size_t>();
    Require(timed <= times.size(), "some events have a time");
    for (std::size_t i = 1; i < timed; ++i) {
        Require(times[i].get<std::int64_t>() >= 0, "events come by time");
    }
    for (std::size_t i = timed; i < times.size(); ++i) {
        Require(times[i].get<std::uint64_t>() < texts, "an event without a time has its bytes");
    }
}

void CheckEvents(const Json& report, std::vector<Place> wanted) {
    const Json& events = report["events"];
    for (const char* const column : {"time", "file", "shape", "value", "lines", "offset", "id"}) {
        Require(events[column].size() == wanted.size(), "every event is in every column");
    }
    CheckIndexes(events["file"], report["files"].size());
    CheckIndexes(events["shape"], report["shapes"].size());
    CheckIndexes(events["value"], report["texts"].size());
    CheckIndexes(events["lines"], report["lists"].size());
    CheckTimes(events, report["texts"].size());
    const auto offsets = Summed(events["offset"], events["file"], report["files"].size());
    const auto ids = Summed(events["id"], events["file"], report["files"].size());
    std::vector<Place> places;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const Json& file = report["files"][events["file"][i].get<std::size_t>()];
        const bool isFirst = file[1] == kSources[0].file;
        Require(isFirst || file[1] == kSources[1].file, "a file has its name");
        places.emplace_back(isFirst ? 0 : 1, static_cast<std::uint64_t>(offsets[i]),
                            static_cast<std::uint32_t>(ids[i]));
    }
    std::ranges::sort(places);
    std::ranges::sort(wanted);
    Require(places == wanted, "every event is there, once, and where it stands");
}

std::string Joined(std::span<const std::string_view> pieces) {
    std::string text;
    for (const std::string_view piece : pieces) {
        text += piece;
    }
    return text;
}

void CheckPage(const std::string& json, const Json& report) {
    static const std::string before = Joined(PageBeforeData());
    static const std::string after = Joined(PageAfterData());
    const std::string page = MakePage(json);
    Require(page.size() >= before.size() + after.size() && page.starts_with(before) && page.ends_with(after),
            "the page stands around its data");
    const std::string_view data =
        std::string_view(page).substr(before.size(), page.size() - before.size() - after.size());
    Require(data.find_first_of("<>&") == std::string_view::npos &&
                data.find("\xE2\x80\xA8") == std::string_view::npos &&
                data.find("\xE2\x80\xA9") == std::string_view::npos,
            "nothing in the data ends its element");
    Require(Json::parse(data, nullptr, false) == report, "the data in the page is the same");
}

void Check(CInput input) {
    constexpr std::size_t kEighths = 8;
    MemorySystem().touched.clear();
    SGathered gathered;
    const std::size_t part = input.TakeByte() % kEighths;
    TakeLog(gathered, input.TakeBytes(input.Rest().size() * part / kEighths));
    const std::size_t half = input.Rest().size() / 2;
    TakeDayFile(gathered, 0, input.TakeBytes(half));
    TakeDayFile(gathered, 1, input.Rest());
    Require(gathered.data.EventCount() == gathered.places.size() &&
                gathered.data.DamageCount() == gathered.damage &&
                gathered.data.ProblemCount() == gathered.problems &&
                gathered.data.RelayCount() == kSources.size(),
            "what was given is counted");
    std::string json;
    SReportHead head;
    head.title = "T";
    head.logs = {"run.log"};
    gathered.data.WriteJson(json, head);
    Require(IsUtf8Text(json) && HasNoControls(json), "the data is readable");
    const Json report = Json::parse(json, nullptr, false);
    Require(report.is_object() && report["relays"].size() == kSources.size() &&
                report["damage"].size() == gathered.damage && report["problems"].size() == gathered.problems,
            "the data holds what was given");
    CheckShapes(report);
    CheckEvents(report, gathered.places);
    CheckPage(json, report);
}

} // namespace

} // namespace ruvo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ruvo::fuzz::Check(ruvo::fuzz::CInput({data, size}));
    return 0;
}
