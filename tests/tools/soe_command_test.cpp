// ruvoctl soe: events of relays whose clocks differ, in one order.
#include "support/scratch_folder.h"
#include "tools/day_files.h"
#include "tools/run_tool.h"

#include "tools/soe/sequence_output.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ruvo::test {
namespace {

enum EFlags : std::uint8_t { kNone = 0, kUntrusted = 1, kSummer = 2 };

/// On 25 October 2026, when the clocks of central Europe go back at 03:00.
std::string Event(std::uint8_t hour, std::uint8_t minute, unsigned milliseconds, const char* text,
                  const char* plant, EFlags flags = kNone) {
    CParlaneIEC870 time(CParlaneIEC870::Octets{0, 0, 0, 0, 25, 10, 26});
    time.SetHour(hour);
    time.SetMinute(minute);
    time.SetMilliseconds(milliseconds);
    time.SetInvalid(flags == kUntrusted);
    time.SetSummerTime(flags == kSummer);
    return Image(CSimpleEventRecord(0, 0, 5, time, text, Value(0x24, {7}), plant, "", "", 0x0320, "", {}));
}

/// Two sites; one relay shows local time with its flag, the others UTC.
struct SSites {
    CScratchFolder folder;
    SSites() {
        Write("north/A1-2026-10-25-DEV.evt",
              Event(2, 59, 59900, "I> start", "Feeder 1", kSummer) + Event(2, 0, 141, "CB open", "Feeder 1"));
        Write("north/A2-2026-10-25-DEV.evt", Event(0, 59, 59983, "I> trip", "Feeder 1"));
        Write("south/B1-2026-10-25-DEV.evt",
              Event(1, 0, 20, "Backup\x1B[2J start", "", kUntrusted) + Event(31, 0, 0, "=When", ""));
        folder.Write("clocks", "A1 CET-1CEST,M3.5.0,M10.5.0/3\n* UTC\n");
    }
    void Write(const std::string& name, const std::string& records) const {
        folder.Write(name, kHeader + records);
    }
    SOutcome Soe(std::vector<std::string> options, std::size_t width = 100) const {
        options.insert(options.begin(), {"soe", folder.Native("north"), folder.Native("south")});
        return RunTool(options, width);
    }
    std::string Clocks() const { return "--clocks=" + folder.Native("clocks"); }
};

} // namespace

TEST(SoeCommand, ClocksThatDifferLineUp) {
    const SSites sites;
    const SOutcome outcome =
        sites.Soe({sites.Clocks(), "--zone=CET-1CEST,M3.5.0,M10.5.0/3", "--zero=i> TRIP"});
    EXPECT_EQ(outcome.out, R"(Times in CET-1CEST,M3.5.0,M10.5.0/3.
time               delta  from zero  site   relay        event                      value
2026-10-25
02:59:59.900s               -0.083   north  Feeder 1 A1  I> start                   7
02:59:59.983s    +0.083     +0.000   north  Feeder 1 A2  I> trip                    7
02:00:00.020?    +0.037?    +0.037?  south  B1           Backup.[2J start           7
02:00:00.141     +0.121?    +0.158   north  Feeder 1 A1  CB open                    7
no time
0000001F190A1A                       south  B1           =When                      7

?  the relay reports its clock as unreliable
s  summer time
)");
    EXPECT_EQ(outcome.status, 0) << outcome.error;
}

TEST(SoeCommand, WithoutClocksTimesAreComparedAsTheyAre) {
    const SSites sites;
    EXPECT_EQ(sites.Soe({"--relay=a", "--until=2026-10-25T02:30", "--zero=2026-10-25T02:00"}, 70).out,
              R"(Times as the relays' clocks show them.
time                     delta      from zero  relay        event     value
2026-10-25
00:59:59.983                    -1:00:00.017   Feeder 1 A2  I> trip   7
02:00:00.141     +1:00:00.158         +0.141   Feeder 1 A1  CB open   7
)");
}

TEST(SoeCommand, ProgramsGetTheSame) {
    const SSites sites;
    const std::vector<std::string> lines = Lines(sites.Soe({sites.Clocks(), "--format=json"}).out);
    ASSERT_EQ(lines.size(), 5U);
    const auto second = nlohmann::json::parse(lines[1]);
    EXPECT_EQ(second["time"], "2026-10-25T00:59:59.983");
    EXPECT_EQ(second["delta_ms"], 83);
    EXPECT_EQ(second["zero_ms"], nullptr);
    const auto last = nlohmann::json::parse(lines[4]);
    EXPECT_TRUE(last["time"].is_null() && last["utc"].is_null() && last["delta_ms"].is_null());
    const std::string csv =
        sites.Soe({sites.Clocks(), "--format=csv", "--spreadsheet", "--zero=2026-10-25T01:00"}).out;
    EXPECT_TRUE(Contains(csv, "\n3,2026-10-25T01:00:00.020,?,37,20,south,B1,,Backup.[2J start,7,7,,,"
                              "2026-10-25T01:00:00.020Z,2026-10-25T01:00:00.020,true,false,false,"));
    EXPECT_TRUE(Contains(csv, "\n5,,,,,south,B1,,'=When,7,7,,,,,false,false,false,"));
}

TEST(SoeCommand, DoubtsAndMistakesAreSaid) {
    const SSites sites;
    sites.folder.Write("clocks", "A1 UTC\n");
    const SOutcome unknown = sites.Soe({sites.Clocks(), "--relay=B"});
    EXPECT_TRUE(Contains(unknown.error, "--clocks: no line fits B1;"));
    EXPECT_TRUE(Contains(unknown.out, "01:00:00.020?~ "));
    EXPECT_EQ(sites.Soe({"--zero=no such text"}).status, 1);
    EXPECT_EQ(sites.Soe({"--zone=UTC"}).status, 2);
    EXPECT_EQ(sites.Soe({sites.Clocks(), "--zone=Mars"}).status, 2);
    sites.Write("north/A1-2026-10-25-DEV.evt", "\x55\x55");
    const SOutcome damaged = sites.Soe({});
    EXPECT_EQ(damaged.status, 1);
    EXPECT_TRUE(Contains(damaged.error, "A1-2026-10-25-DEV.evt: damage at byte 46, 2 bytes: "));
}

TEST(SoeCommand, DifferencesAreAsLongAsTheyNeedToBe) {
    const std::pair<std::int64_t, const char*> kCases[] = {
        {0, "+0.000"},
        {-59'999, "-59.999"},
        {60'000, "+1:00.000"},
        {3'600'000, "+1:00:00.000"},
        {-86'399'999, "-23:59:59.999"},
        {90'061'001, "+1d 01:01:01.001"},
    };
    for (const auto& [difference, text] : kCases)
        EXPECT_EQ(DeltaText(difference), text);
}

} // namespace ruvo::test
