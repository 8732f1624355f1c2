// ruvoctl events: what people and scripts get for a day file, in each format.
#include "support/case_table.h"
#include "support/scratch_folder.h"
#include "tools/day_files.h"
#include "tools/events/event_filter.h"
#include "tools/run_tool.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ruvo::test {
namespace {

using nlohmann::json;

/// Two relays, the second in a folder below and with damage at its end; and what is to be passed over.
struct SSite {
    CScratchFolder folder;
    SSite() {
        folder.Write("AB12-1-2026-11-16-DEV.evt",
                     kHeader + Extended(At(16, 3), "Gesch\xE4lt\x02") + Simple(At(17, 5), "Late"));
        folder.Write("b/CD34-2-2026-11-16-DEV.EVT",
                     kHeader + Simple(At(16, 4), "Trip, \"A\"") + Simple(At(31, 2), "When") + "\x55\x55");
        folder.Write("notes.txt", "no day file");
        std::filesystem::create_symlink(folder.Native("b/CD34-2-2026-11-16-DEV.EVT"), folder.Native("l.evt"));
        std::filesystem::create_directory_symlink(folder.Native("b"), folder.Native("c"));
    }
    /// What `events` says of it; the folder is called "@", its name "@@".
    SOutcome Events(std::vector<std::string> options) const {
        options.insert(options.begin(), {"events", folder.Native()});
        SOutcome outcome = RunTool(options);
        const std::string path = folder.Native();
        outcome.out = Replaced(Replaced(outcome.out, path, "@"), path.substr(path.rfind('/') + 1), "@@");
        return outcome;
    }
};

std::string WithValue(const std::string& text, std::unique_ptr<CParlaneData> value) {
    return Image(
        CSimpleEventRecord(0, 0, 5, At(16, 3), text, std::move(value), "P", "Q", "R", 0x0320, "", {}));
}

} // namespace

// The names, their order and what is null are relied on by scripts.
TEST(EventsCommand, JsonHoldsEveryFieldInItsOrder) {
    const std::vector<std::string> lines = Lines(SSite().Events({"--format", "json"}).out);
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(
        lines[0],
        R"({"file":"@/AB12-1-2026-11-16-DEV.evt","relay":"AB12-1","offset":46,"kind":"extended",)"
        R"("record_number":1,"unique_id":9,"event_code":5,"time":"2026-11-16T03:12:01.234",)"
        R"("time_bytes":"D2040C03100B1A","time_invalid":false,"summer_time":false,"location":"09.01",)"
        R"("event_text":"Geschält\u0002","event":"Geschält.","text":"Event Value \u000AFault 271\u000A",)"
        R"("value":{"code":32,"bytes":"05"},"aux":["P","Q","R"],"cells":[{"template":"Event Value ",)"
        R"("text":"Event Value ","value":{"code":32,"bytes":"05"},"bits":["Start","Trip","Gesperrt ü"]},)"
        R"({"template":"Fault %u","text":"Fault 271","value":{"code":36,"bytes":"0F01"},"bits":[]}],)"
        R"("valid":true,"site":"@@","plant":"P","description":"Q","model":"R","utc":null,"utc_doubtful":null,)"
        R"("value_text":"0000000000000101","value_number":null,"value_unit":"","value_set":"Start, Gesperrt ü",)"
        R"("cell_values":[{"label":"Event Value","value":"0000000000000101","set":["Start","Gesperrt ü"]},)"
        R"({"label":"Fault","value":"271","set":[]}],"schema":2})");
    EXPECT_TRUE(Contains(lines[1],
                         R"("text":"Step 7","value":null,"aux":["Départ \"7\"","a\u0007\u001B[2J","�\\"],)"
                         R"("format":"Step %u","values":[{"code":36,"bytes":"07"},null],"valid":true,)"));
    EXPECT_TRUE(Contains(lines[3], R"("time":null,"time_bytes":"D2040C021F0B1A")")) << "31 November";
    EXPECT_EQ(lines[4], R"({"file":"@/b/CD34-2-2026-11-16-DEV.EVT","offset":179,"length":2,)"
                        R"("error":"no block begins here","site":"@@","schema":2})");
    for (const std::string& line : lines)
        EXPECT_TRUE(json::accept(line)) << line;
}

TEST(EventsCommand, NoFormatLetsAControlCharacterThrough) {
    for (const char* format : {"text", "json", "csv"}) {
        const SOutcome outcome = SSite().Events({"--format", format});
        EXPECT_EQ(outcome.out.find_first_of("\x01\x02\x07\x1B\x7F"), std::string::npos) << format;
        EXPECT_NO_THROW(static_cast<void>(json(outcome.out).dump())) << "well-formed UTF-8 in " << format;
        EXPECT_EQ(outcome.status, 1) << format;
    }
}

TEST(EventsCommand, CsvQuotesWhatNeedsIt) {
    const std::vector<std::string> lines =
        Lines(SSite().Events({"--format", "csv", "--match", "Trip, "}).out);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(lines[0].starts_with("file,relay,offset,kind,") &&
                lines[0].ends_with(",value_set,cell_values\r"));
    EXPECT_EQ(
        lines[1],
        R"(@/b/CD34-2-2026-11-16-DEV.EVT,CD34-2,46,simple,0,0,5,2026-11-16T04:12:01.234,)"
        R"(D2040C04100B1A,false,false,03.20,"Trip, ""A""","Trip, ""A""",Step 7,,,"Départ ""7""",)"
        "a\\x07\\x1B[2J,�\\,Step %u,36:07 -,,true,,,@@,\"Départ \"\"7\"\"\",a\\x07\\x1B[2J,�\\,,,,,,,\r");
    EXPECT_EQ(std::ranges::count(lines[2], ','), std::ranges::count(lines[0], ','));
    EXPECT_TRUE(lines[2].ends_with(",2,no block begins here,@@,,,,,,,,,,\r")) << lines[2];
}

TEST(EventsCommand, SpreadsheetsGetNoFormula) {
    const CScratchFolder folder;
    std::string records;
    for (const char* text : {"=1+1", "+1", "-1", "@A1", "a=1", "=\"x\"", "  =1", "\t=2", "a;b"})
        records += Simple(At(16, 3), text);
    folder.Write("=R1-2026-11-16-DEV.evt", kHeader + records);
    const std::string path = folder.Native("=R1-2026-11-16-DEV.evt");
    const std::string csv = RunTool({"events", path, "--format", "csv", "--spreadsheet"}).out;
    for (const char* part : {",'=R1,46,", ",'=1+1,'=1+1,", ",'+1,'+1,", ",'-1,'-1,", ",'@A1,'@A1,",
                             ",a=1,a=1,", R"(,"'=""x""",)", ",'  =1,", ",\\x09=2,", ",a;b,a;b,"})
        EXPECT_TRUE(Contains(csv, part));
    EXPECT_TRUE(csv.starts_with("\uFEFFfile,")) << "the mark of UTF-8";
    EXPECT_TRUE(Contains(RunTool({"events", path, "--format", "csv"}).out, ",=1+1,=1+1,"));
    EXPECT_EQ(RunTool({"events", path, "--spreadsheet"}).status, 2);
}

TEST(EventsCommand, ValuesAreTextsNumbersAndUnits) {
    // A value's type and data; its text, number and unit.
    const std::tuple<std::uint32_t, std::vector<std::uint8_t>, const char*> kCases[] = {
        {0x24, {152}, "152;152;"},
        {0x28, {0xFE, 0xFF}, "-2;-2;"},
        {0x2C, {0xE2, 0x04, 127, 1}, "12.50kV;12500;V"},
        {0x2C, {0xE2, 0x84, 125, 12}, "-125.0%;-125;%"},
        {0x34, {0, 0, 0xA0, 0x3F}, "1.250000;1,25;"},
        {0x18, {'1', '2', 'A'}, "12A;;"},
        {0x20, {5}, "0000000000000101;;"},
        {0xFF, {}, ";;"},
    };
    const CScratchFolder folder;
    std::string records;
    for (const auto& [type, data, wanted] : kCases)
        records += WithValue("E", Value(type, data));
    folder.Write("R-1-2026-11-16-DEV.evt", kHeader + records);
    const std::vector<std::string> lines =
        Lines(RunIn(folder, "events @/R-1-2026-11-16-DEV.evt --format csv --decimal-comma --site N").out);
    ASSERT_EQ(lines.size(), std::size(kCases) + 1);
    EXPECT_TRUE(lines[0].starts_with("file;relay;"));
    for (std::size_t at = 0; at < std::size(kCases); ++at)
        EXPECT_TRUE(
            lines[at + 1].ends_with(";true;;;N;P;Q;R;;;" + std::string(std::get<2>(kCases[at])) + ";;\r"))
            << lines[at + 1];
}

TEST(EventsCommand, TextFitsAndAligns) {
    const CScratchFolder folder;
    const std::string path = folder.Native("R1-7-2026-11-16-DEV.evt");
    folder.Write("R1-7-2026-11-16-DEV.evt",
                 kHeader + Extended(At(16, 3), "A rather long text about much of \xC9"));
    EXPECT_EQ(RunTool({"events", path}, 64).out,
              "time                      relay  event               value\n"
              "2026-11-16 03:12:01.234   R1-7   A rather long text  00000000000\n"
              "                                 about much of É     00101\n"
              "      set: Start, Gesperrt ü\n"
              "      Fault 271\n");
}

// "%" in a relay's text need not be meant as a format.
TEST(EventsCommand, NoPercentSignHidesAValue) {
    const CScratchFolder folder;
    const auto extended = [](const std::string& text, std::uint8_t value, const std::string& cellTemplate) {
        CCellList cells;
        const std::size_t percent = std::min(text.find('%'), text.size());
        cells.push_back(CCellFactory::CreateWithDefaultLimits({}, Value(0x24, {value}).get(),
                                                              "Event Value " + text.substr(percent)));
        cells.push_back(CCellFactory::CreateWithDefaultLimits({}, Value(0x24, {10}).get(), cellTemplate));
        return Image(CExtendedEventRecord(1, 9, 5, At(16, 3), text.substr(0, percent), Value(0x24, {value}),
                                          "", "", "", 0x0901, std::move(cells)));
    };
    // A record; its event, value and other cell, blanks as one.
    const std::pair<std::string, const char*> kCases[] = {
        {extended("Thermal state above 80% zone 1", 97, "%u"), "Thermal state above 80% zone 1 97\n 10\n"},
        {extended("Overload 110%", 113, "[%u]"), "Overload 110% 113\n [10]\n"},
        {extended("Load 80%%, fast", 152, "Stage %u"), "Load 80%, fast 152\n Stage 10\n"},
        {extended("Load %u A", 152, "90% y"), "Load 152 A\n 90 10\n"},
        {extended("Load", 152, "%s"), "Load 152\n %s 10\n"},
        {WithValue("Overload 80% stage", Value(0xFF, {})), "???? (Overload 80% stage)\n"},
        {WithValue("At 80% zone", Value(0x24, {7})), "At 80% zone 7\n"},
    };
    for (const auto& [record, wanted] : kCases) {
        folder.Write("R-1-2026-11-16-DEV.evt", kHeader + record);
        std::string text = RunTool({"events", folder.Native()}, 200).out;
        text.erase(0, text.find("R-1") + 4);
        const auto isBlanks = [](char a, char b) { return a == ' ' && b == ' '; };
        text.erase(std::unique(text.begin(), text.end(), isBlanks), text.end());
        EXPECT_EQ(text, " " + std::string(wanted));
    }
}

TEST(EventsCommand, FiltersAndSorting) {
    const SSite site;
    ForEachCase<3>("tools/events_filters.txt", [&](auto& first, auto& second, auto& want) {
        std::vector<std::string> options{"--format=json", first, second};
        std::erase(options, "");
        const SOutcome outcome = site.Events(options);
        std::string got;
        for (const std::string& line : Lines(outcome.out))
            got += json::parse(line).value("event", "!")[0];
        EXPECT_EQ(got, want);
        EXPECT_EQ(outcome.status, want.ends_with('!') ? 1 : 0);
    });
}

TEST(EventsCommand, ADayReachesFromItsFirstMillisecondToItsLast) {
    for (const auto& [time, isIn] : {std::pair("2026-11-16T23:59:59.999", false),
                                     {"2026-11-17T00:00:00.000", true},
                                     {"2026-11-17T23:59:59.999", true},
                                     {"2026-11-18T00:00:00.000", false}}) {
        const TimeKey key = *ParseTimeKey(time, EDayEdge::Start);
        EXPECT_EQ(key >= *ParseTimeKey("2026-11-17", EDayEdge::Start) &&
                      key <= *ParseTimeKey("2026-11-17", EDayEdge::End),
                  isIn)
            << time;
    }
}

TEST(EventsCommand, WhatCannotBeDoneIsSaid) {
    const CScratchFolder folder;
    folder.Write("x.evt", kHeader);
    ForEachCase<3>("tools/events_mistakes.txt", [&](auto& words, auto& status, auto& error) {
        const SOutcome outcome = RunIn(folder, words);
        EXPECT_EQ(outcome.status, std::stoi(status));
        EXPECT_TRUE(Contains(outcome.error, error));
    });
}

TEST(HelpCommand, PrintsWhatTheOptionPrints) {
    EXPECT_EQ(RunTool({"help"}).out, RunTool({"--help"}).out);
    const std::string events = RunTool({"help", "events"}).out;
    EXPECT_EQ(events, RunTool({"events", "--help"}).out);
    EXPECT_TRUE(Contains(events, "Usage: ruvoctl events"));
}

} // namespace ruvo::test
