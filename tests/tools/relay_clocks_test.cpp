// What relays' clocks show: the rules of zones, and the file that says which clock follows which.
#include "support/case_table.h"
#include "support/scratch_folder.h"
#include "tools/day_files.h"
#include "tools/run_tool.h"

#include "tools/clocks/zone_rule.h"
#include "tools/events/event_fields.h"

namespace ruvo::test {
namespace {

/// Of "2026-03-29 02:30:00.000".
std::int64_t MomentOf(const std::string& text) {
    const auto number = [&text](std::size_t at, std::size_t size) {
        return static_cast<unsigned>(std::stoul(text.substr(at, size)));
    };
    CParlaneIEC870 time;
    time.SetYear(number(2, 2));
    time.SetMonth(number(5, 2));
    time.SetDay(number(8, 2));
    time.SetHour(number(11, 2));
    time.SetMinute(number(14, 2));
    time.SetMilliseconds(number(17, 2) * 1000 + number(20, 3));
    return MillisecondsOf(time);
}

std::string TextOf(std::int64_t moment, const char* mark) {
    std::string text;
    AppendTime(text, StampOf(moment), ' ');
    return text + mark;
}

} // namespace

TEST(ZoneRule, TurnsTimesIntoUtcAndBack) {
    ForEachCase<4>("tools/zone_cases.txt", [](auto& zone, auto& shown, auto& utc, auto& again) {
        const auto rule = CZoneRule::Parse(zone);
        ASSERT_TRUE(rule);
        const SMoment moment = rule->ToUtc(MomentOf(shown), shown.ends_with('s'));
        EXPECT_EQ(TextOf(moment.utc, moment.isDoubtful ? " ~" : ""), utc);
        const SShownTime back = rule->FromUtc(moment.utc);
        EXPECT_EQ(TextOf(back.milliseconds, back.isSummerTime ? " s" : ""), again);
    });
}

TEST(RelayClocks, MistakesAreSaidWithTheirLine) {
    const CScratchFolder folder;
    folder.Write("R-1-2026-11-16-DEV.evt", kHeader + Simple(At(16, 3), "Trip"));
    ForEachCase<2>("tools/zone_mistakes.txt", [&](auto& lines, auto& error) {
        folder.Write("clocks", lines);
        const SOutcome outcome = RunIn(folder, "events @/R-1-2026-11-16-DEV.evt --clocks @/clocks");
        EXPECT_EQ(outcome.status, error.empty() ? 0 : 2);
        EXPECT_EQ(outcome.error.empty(), error.empty());
        EXPECT_TRUE(Contains(outcome.error, error));
    });
}

TEST(RelayClocks, TheFirstLineThatFitsApplies) {
    const CScratchFolder folder;
    folder.Write("R-1-2026-11-16-DEV.evt", kHeader + Simple(At(16, 3), "Trip"));
    const auto utc = [&](const char* lines) {
        folder.Write("clocks", lines);
        const std::string json =
            RunIn(folder, "events @/R-1-2026-11-16-DEV.evt --clocks @/clocks --site North --format json").out;
        const std::size_t start = json.find(R"("utc":)") + 6;
        return json.substr(start, json.find(R"(,"utc_)") - start);
    };
    EXPECT_EQ(utc("north/r-? +01:00\n* UTC\n"), R"("2026-11-16T02:12:01.234Z")");
    EXPECT_EQ(utc("south/R-1 +01:00\nR-*1* UTC\n"), R"("2026-11-16T03:12:01.234Z")");
    EXPECT_EQ(utc("R-1? UTC\nR UTC\n"), "null");
}

} // namespace ruvo::test
