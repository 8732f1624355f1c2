// ruvoctl report: what reaches the page, and that nothing in it can be anything but data.
#include "support/case_table.h"
#include "support/scratch_folder.h"
#include "tools/day_files.h"
#include "tools/run_tool.h"

#include "tools/report/event_kind.h"
#include "tools/report/report_page.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ruvo::test {
namespace {

using nlohmann::json;

constexpr std::string_view kDataStart = R"(<script type="application/json" id="data">)";

std::string Record(std::uint8_t day, std::uint8_t hour, const std::string& text) {
    return Image(CSimpleEventRecord(0, 0, 5, At(day, hour), text, nullptr, "<i>", "", "", 0x0320, "", {}));
}

/// The data element's text, up to where a browser sees its end.
std::string DataOf(const std::string& page) {
    const std::size_t start = page.find(kDataStart) + kDataStart.size();
    return page.substr(start, page.find("</", start) - start);
}

} // namespace

TEST(ReportPage, DataCannotLeaveItsElement) {
    ForEachCase<2>("tools/script_json.txt", [](auto& text, auto& want) {
        std::string out;
        AppendScriptJson(out, text);
        EXPECT_EQ(out, want);
    });
}

TEST(ReportCommand, PageHoldsEventsDamageAndProblems) {
    const CScratchFolder folder;
    const std::string attack = "</script><b>";
    folder.Write("AB12-1-2026-11-16-DEV.evt", kHeader + Record(17, 5, attack) + Record(16, 3, "I> trip") +
                                                  Record(31, 2, "When") + "\x55\x55");
    folder.Write("CD34-2-2026-11-16-DEV.evt", kHeader);
    folder.Write("log", "2026/11/16 03:00:00 Bad <b>\r\n2026/11/19 03:00:00 Too late\r\nforeign\r\n");
    const SOutcome outcome = RunTool({"report", folder.Native(), "--log", folder.Native("log"), "--until",
                                      "2026-11-18", "--title", "A & B", "-o", "-"});
    EXPECT_EQ(outcome.status, 1) << "there was damage: " << outcome.error;
    const json data = json::parse(DataOf(outcome.out));
    const auto& columns = data["events"];
    const auto textOf = [&](std::size_t event) {
        return data["texts"]
                   [data["shapes"][columns["shape"][event].get<std::size_t>()][0].get<std::size_t>()];
    };
    ASSERT_EQ(columns["time"].size(), 2U) << "the third lies beyond --until";
    EXPECT_EQ(columns["time"], json({1794798721234, 93'600'000})) << "sorted, the second as a difference";
    EXPECT_EQ(textOf(0), "I> trip");
    EXPECT_EQ(textOf(1), attack);
    EXPECT_EQ(data["relays"], json({"AB12-1", "CD34-2"})) << "one without any event too";
    EXPECT_EQ(data["damage"].size(), 1U);
    EXPECT_EQ(data["problems"][0][1], "Bad <b>");
    EXPECT_EQ(data["problems"].size(), 2U) << "in time, and one without a time";
    EXPECT_EQ(data["title"], "A & B");
}

TEST(ReportCommand, ASiteBringsItsLogAndItsName) {
    const CScratchFolder folder;
    for (const char* name : {"AB12-1-2026-11-16-DEV.evt", "AB12-1-2026-11-14-DEV.evt",
                             "AB12-1-2099-01-01-DEV.evt", "CD34-2-2026-11-12-DEV.evt"})
        folder.Write(std::string("ev/") + name, kHeader);
    folder.Write("log", "2026/11/16 03:00:00 First\r\nand more\r\n2026/11/16 05:00:00 Last\r\n");
    folder.Write("other", "2026/11/16 04:00:00 Between\r\n");
    folder.Write("north.ini", "[RUVO_GENERAL]\nEventRootDir=" + folder.Path("ev") +
                                  "\nErrorLogPathname=" + folder.Path("log") + "\n[RUVO_SERIAL]\nRV001=5\n");
    const auto report = [&](std::vector<std::string> options) {
        options.insert(options.begin(), {"report", folder.Native("north.ini"), "-o", "-"});
        const SOutcome outcome = RunTool(options);
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        return json::parse(DataOf(outcome.out));
    };
    const json data = report({"--log", folder.Native("other")});
    EXPECT_EQ(data["title"], "north");
    EXPECT_EQ(data["logs"], json({folder.Native("log"), folder.Native("other")}));
    std::string problems;
    for (const json& problem : data["problems"])
        problems += problem[1].get<std::string>() + std::to_string(problem[4].get<int>()) + " ";
    EXPECT_EQ(problems, "First0 and more0 Between1 Last0 ");
    EXPECT_EQ(data["last_days"], json({"2026-11-16", "2026-11-12"})) << "the future is no last day";
    EXPECT_EQ(report({"--until", "2026-11-15", "--title", "N"})["last_days"],
              json({"2026-11-14", "2026-11-12"}));
}

TEST(ReportCommand, AMutedRelaysLinkIsNoAlarm) {
    const CScratchFolder folder;
    std::filesystem::create_directories(folder.Native("ev"));
    folder.Write("log",
                 "2026/11/16 03:00:00 Test connection failed. Unable to connect to the device or password is "
                 "invalid. Connection details - COM Port: COM1, device address: 5.\r\n"
                 "2026/11/16 03:00:00 Invalid password. Connection details - COM Port: COM1, device "
                 "address: 5.\r\n");
    folder.Write("north.ini", "[RUVO_GENERAL]\nCommPort=COM1\nEventRootDir=" + folder.Path("ev") +
                                  "\nErrorLogPathname=" + folder.Path("log") + "\n[RUVO_SERIAL]\nRV001=5\n");
    ASSERT_EQ(RunIn(folder, "mute @/north.ini RV001 --until 7d --why <CT>").status, 0);
    const json data = json::parse(DataOf(RunIn(folder, "report @/north.ini -o -").out));
    EXPECT_EQ(data["mutes"][0][1], "RV001 (5)");
    EXPECT_EQ(data["mutes"][0][3], "<CT>");
    EXPECT_EQ(data["problems"][0][5], 0);
    EXPECT_EQ(data["problems"][1][5], -1) << "a refused password counts";
}

TEST(ReportCommand, FileIsReplacedAndMistakesAreSaid) {
    const CScratchFolder folder;
    folder.Write("AB12-1-2026-11-16-DEV.evt", kHeader + Record(16, 3, "Trip"));
    folder.Write("page.html", "old");
    const SOutcome good = RunIn(folder, "report @ --output @/page.html");
    EXPECT_EQ(good.status, 0) << good.error;
    EXPECT_TRUE(Contains(good.out, "page.html: 1 event of 1 relay, 0 problems"));
    EXPECT_TRUE(folder.Read("page.html").starts_with("<!DOCTYPE html>"));
    EXPECT_FALSE(folder.Has("page.html.tmp"));
    EXPECT_EQ(RunIn(folder, "report @").status, 2) << "no word where to";
    EXPECT_EQ(RunIn(folder, "report @ -o - --silent 0").status, 2);
    EXPECT_EQ(RunIn(folder, "report @ -o @/no/such/x.html").status, 1);
    EXPECT_EQ(RunIn(folder, "report @ -o - --log @/none").status, 0) << "the first problem makes the log";
    const SOutcome noLog = RunIn(folder, "report @ -o - --log @/no/none");
    EXPECT_EQ(noLog.status, 1);
    EXPECT_EQ(json::parse(DataOf(noLog.out))["failures"].size(), 1U) << "the page says so too";
}

TEST(EventKind, FirstTellingWordDecides) {
    const std::pair<const char*, EEventKind> kCases[] = {{"I> TRIP", EEventKind::Trip},
                                                         {"DÉCLENCHEMENT", EEventKind::Trip},
                                                         {"Trip circuit alarm", EEventKind::Alarm},
                                                         {"Fault recorded", EEventKind::Fault},
                                                         {"Restart", EEventKind::Other},
                                                         {"CB open", EEventKind::Switching},
                                                         {"stripped", EEventKind::Other},
                                                         {"", EEventKind::Other}};
    for (const auto& [text, kind] : kCases)
        EXPECT_EQ(EventKindOf(text), kind) << text;
}

} // namespace ruvo::test
