// ruvoctl status: the verdict on a site, at a time of our own.
#include "support/case_table.h"
#include "support/fake_system.h"
#include "support/scratch_folder.h"
#include "tools/day_files.h"
#include "tools/recover/site_leftovers.h"
#include "tools/run_tool.h"

#include "platform/environment.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ruvo::test {
namespace {

/// Two relays, the second damaged; the log is in a local time two hours ahead.
class CStatus : public testing::Test {
protected:
    CStatus() {
        g_utcTime = {2026, 11, 20, 23, 30, 0};
        SetEnvironmentValue("TZ", "EET-2");
        m_folder.Write("AB12-1-2026-11-18-DEV.evt", kHeader + Simple(At(18, 3), "Old"));
        m_folder.Write("AB12-1-2026-11-19-DEV.evt", kHeader + Simple(At(19, 3), "New") +
                                                        Simple(At(19, 2), "New") + Simple(At(31, 2), "When") +
                                                        "\x55");
        m_folder.Write("CD\"34-2-2026-11-05-DEV.evt", kHeader + Simple(At(5, 3), "x") + "\x55");
        m_folder.Write("run.log",
                       "torn\r\n"
                       "2026/11/19 03:00:00 Before. P32LS status: no port\r\n"
                       "belongs to the line before\r\n"
                       "2026/11/20 01:30:00 Then \x1B. Connection details - COM Port: COM2, device "
                       "address: 7.\r\n"
                       "torn\r\n");
        m_folder.Write("expected", "AB12-1 # the feeder\r\n\n  EF56-3  \n");
    }
    SOutcome Status(std::vector<std::string> options, const std::string& log = "run.log") {
        options.insert(options.begin(), {"status", m_folder.Native(), m_folder.Native(log)});
        return RunTool(options);
    }
    CScratchFolder m_folder;
};

TEST_F(CStatus, ExitStatusFollowsTheThresholds) {
    const auto run = [this](const std::string& more, const std::string& log = "run.log") {
        std::map<std::string, std::string> options{
            {"--warn-problems", "0"}, {"--warn-silent", "0"}, {"--critical-silent", "0"}};
        std::istringstream words(more);
        for (std::string name, value; words >> name >> value;)
            options[name] = value;
        std::string line = "status @ @/" + log;
        for (const auto& [name, value] : options)
            line += " " + name + " " + value;
        return RunIn(m_folder, line);
    };
    ForEachCase<3>("tools/status_cases.txt", [&](auto& options, auto& status, auto& said) {
        const SOutcome outcome = run(options);
        EXPECT_EQ(outcome.status, std::stoi(status)) << outcome.out;
        EXPECT_TRUE(Contains(outcome.error + outcome.out, said));
        EXPECT_FALSE(Contains(outcome.out, "\x1B"));
    });
    EXPECT_EQ(run("", "no/such.log").status, 3);
    std::filesystem::remove(m_folder.Native("CD\"34-2-2026-11-05-DEV.evt"));
    EXPECT_TRUE(run("--since 2026-11-21").out.starts_with("GOOD: 1 relay, 0 problems"));
    const SOutcome noLog = run("--since 2026-11-21", "none.log");
    EXPECT_EQ(noLog.status, 1) << "the first problem makes the log, or the path is mistyped";
    EXPECT_TRUE(noLog.out.starts_with("WARNING: the error log does not exist: ")) << noLog.out;
}

TEST_F(CStatus, NoNameHidesASilentRelay) {
    for (const char* name :
         {"CD\"34-2-2099-01-01", "CD\"34-2-2026-99-99", "EF56-3-2026-11-22", "GH78-4-2026-11-21"})
        m_folder.Write(name + std::string("-DEV.evt"), kHeader);
    const std::string said = Status({"--critical-silent", "14", "--warn-problems", "0"}).out;
    for (const char* cause :
         {"CRITICAL: Départ \"7\" (CD\"34-2) has been silent for 15 days; EF56-3 has only day files dated",
          "Départ \"7\" (CD\"34-2) has a day file of 2099-01-01, which is in the future"})
        EXPECT_TRUE(Contains(said, cause));
    EXPECT_FALSE(Contains(said, "GH78-4 has")) << "tomorrow is another clock's today";
}

TEST_F(CStatus, TheLatestProblemsAreInOrder) {
    std::string text = "2026/11/18 03:00:00 old\r\n";
    for (int line = 0; line < 47; ++line)
        text += "2026/11/20 01:30:00 " + std::to_string(line) + "\r\nmore\r\n"; // a line of its own
    m_folder.Write("many.log", text);
    const auto log = nlohmann::json::parse(Status({"--format", "json"}, "many.log").out)["log"];
    EXPECT_EQ(log["problems"], 94);
    ASSERT_EQ(log["latest"].size(), 20);
    for (int at = 0; at < 20; at += 2)
        EXPECT_EQ(log["latest"][at]["message"], std::to_string(37 + at / 2));
}

TEST_F(CStatus, JsonAndMetrics) {
    const SOutcome outcome =
        Status({"--format", "json", "--prometheus", m_folder.Native("m.prom"), "--site", "N\"1"});
    const auto status = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(status["state"], "warning");
    EXPECT_EQ(
        status["relays"][0].dump(),
        R"({"damaged_places":1,"description":"a\\x07\\x1B[2J","last_day":"2026-11-19","last_event":"2026-11-19T03:12:01.234",)"
        R"("last_file":"AB12-1-2026-11-19-DEV.evt","model":"�\\","plant":"Départ \"7\"","records":4,"records_in_last_file":3,"relay":"AB12-1",)"
        R"("silent_days":1})");
    EXPECT_EQ(status["log"]["lines"], 5);
    EXPECT_EQ(status["log"]["by_connection"][1]["connection"], "COM2 device 7");
    EXPECT_EQ(status["log"]["latest"][0]["message"], "Then \x1B.");
    const std::string metrics = m_folder.Read("m.prom");
    for (const char* line :
         {"ruvo_relay_records{site=\"N\\\"1\",relay=\"AB12-1\"} 4\n",
          "ruvo_relay_silent_seconds{site=\"N\\\"1\",relay=\"CD\\\"34-2\"} 1296000\n",
          "ruvo_relay_last_file_timestamp_seconds{site=\"N\\\"1\",relay=\"AB12-1\"} 1795046400\n",
          "ruvo_relay_last_event_timestamp_seconds{site=\"N\\\"1\",relay=\"AB12-1\"} 1795057921\n",
          "# TYPE ruvo_site_state gauge\nruvo_site_state{site=\"N\\\"1\"} 1\n",
          "ruvo_status_timestamp_seconds{site=\"N\\\"1\"} 1700000000\n"})
        EXPECT_TRUE(Contains(metrics, line));
}

} // namespace
TEST(SiteLeftovers, AreCountedAsFarAsTheyAreKnown) {
    SSiteLeftovers left;
    EXPECT_FALSE(left.IsRead() || left.EventsWaiting());
    left.roots.resize(2);
    left.roots[1].found.isRead = false;
    left.roots[0].found.waiting.push_back({"x.journal", {}, 3});
    EXPECT_EQ(std::pair(left.EventsWaiting(), left.EventsSetAside()),
              std::pair(std::optional<std::uint64_t>(3), std::optional<std::uint64_t>()));
    left.roots[1].found.isRead = true;
    EXPECT_EQ(left.EventsSetAside(), 0U);
}

} // namespace ruvo::test
