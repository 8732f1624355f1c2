// ruvoctl status of an INI file: what the records of its visits add.
#include "support/case_table.h"
#include "support/fake_system.h"
#include "support/scratch_folder.h"
#include "tools/run_tool.h"
#include "tools/visit_entries.h"

#include "platform/environment.h"

#include <nlohmann/json.hpp>

namespace ruvo::test {
namespace {

class CVisitStatus : public testing::Test {
protected:
    CVisitStatus() {
        SetEnvironmentValue("RUVO_STATE_DIR", folder.Native("state"));
        std::filesystem::create_directories(folder.Native("ev"));
        WriteSite("10.0.0.6,2");
        SetEnvironmentValue("TZ", "UTC0");
    }

    void WriteSite(const std::string& second) const {
        folder.Write("site.ini", "[RUVO_GENERAL]\nUseEthernet=1\nUseModem=0\nEventRootDir=" +
                                     folder.Native("ev") + "\nErrorLogPathname=" + folder.Native("run.log") +
                                     "\n[RUVO_ETHERNET]\nRV001=10.0.0.5,1\nRV002=" + second + "\n");
    }
    static SVisitEntry Entry(const std::string& key, const std::string& address, std::uint64_t events) {
        SVisitEntry entry = EntryNow(key, address, true, "AB12-" + key.substr(4), "");
        entry.taken = events;
        return entry;
    }
    /// One visit at 02:00 that day, for three minutes; the second relay may not answer.
    void Visit(int day, SVisitLine end, bool isWhole = true, const char* ini = "site.ini",
               bool isEnded = true) {
        g_utcTime = {2026, 11, day, 2, 0, 0};
        CVisitRecord record(folder.Path("ev"), folder.Path(ini));
        record.Begin();
        if (end.ended != ERunEnd::NotBegun) {
            record.Add(Entry("RV001", "10.0.0.5,1", 5));
            SVisitEntry second = Entry("RV002", "10.0.0.6,2", 0);
            second.isReached = isWhole;
            second.name = isWhole ? second.name : "";
            second.plant = isWhole ? "Feeder 7" : "";
            second.status = isWhole ? 0 : 11;
            second.statusText = isWhole ? "" : "cannot \"open\"";
            record.Add(second);
        }
        g_utcTime = {2026, 11, day, 2, 3, 4};
        if (isEnded)
            record.End(end);
    }
    void Prepare(const std::string& visit) {
        std::istringstream words(visit);
        std::string how;
        SVisitLine end;
        words >> how >> end.logLines;
        end.ended = how == "signal" ? ERunEnd::Signal : how == "refused" ? ERunEnd::NotBegun : ERunEnd::Whole;
        end.signal = "SIGTERM";
        end.notVisited = 3;
        end.result = 2;
        std::filesystem::remove_all(folder.Native("state"));
        if (how != "-" && how != "other") {
            Visit(19, SVisitLine{});
            Visit(how == "future" ? 29 : 20, end, how != "unreached", "site.ini", how != "killed");
        }
        if (how == "other")
            Visit(20, end, true, "other.ini");
        if (how == "hidden") { // root may look anywhere; what is no folder cannot be looked into
            std::filesystem::remove_all(folder.Native("state"));
            folder.Write("state", "");
        }
        g_utcTime = {2026, 11, 20, 23, 30, 0};
    }

    void Do(const std::string& step);

    CScratchFolder folder;
};

TEST_F(CVisitStatus, VerdictFollowsTheLastVisit) {
    ForEachCase<5>("tools/visit_status_cases.txt",
                   [&](auto& visit, auto& log, auto& options, auto& status, auto& said) {
                       Prepare(visit);
                       std::filesystem::remove(folder.Native("run.log"));
                       if (log == "there")
                           folder.Write("run.log", "2026/11/18 03:00:00 Before.\r\n");
                       const SOutcome outcome = RunIn(folder, "status @/site.ini " + options);
                       EXPECT_EQ(outcome.status, std::stoi(status)) << outcome.out;
                       const std::string wanted = Replaced(said, "@", folder.Native());
                       EXPECT_TRUE(Contains(outcome.error + outcome.out, wanted));
                   });
}

/// A missing one is fine as long as no visit is known to have stored anything.
TEST_F(CVisitStatus, AQuietSiteNeedsNoEventRoot) {
    Prepare("whole 0");
    std::filesystem::remove_all(folder.Native("ev"));
    const auto status = [this] { return RunIn(folder, "status @/site.ini").status; };
    EXPECT_EQ(status(), 0);
    CVisitRecord record(folder.Path("ev"), folder.Path("site.ini"));
    record.Begin();
    SVisitEntry entry = Entry("RV001", "10.0.0.5,1", 1);
    entry.stored = 1;
    record.Add(entry);
    record.End(SVisitLine{});
    EXPECT_EQ(status(), 3);
}

TEST_F(CVisitStatus, JsonAndMetricsTellOfEachRelay) {
    Prepare("unreached 1");
    folder.Write("ev/AB12-2-2026-10-31-DEV.evt", "");
    const std::string causes = RunIn(folder, "status @/site.ini").out;
    EXPECT_TRUE(Contains(causes, "Feeder 7 (AB12-2) has been silent for 20 days"));
    folder.Write("run.log", "2026/11/20 03:00:00 Failed to open ethernet connection. Connection string: "
                            "TNLC=\"RPCDll.Dll\",\"10.0.0.6\",\"0\",\"2\",\"0\". P32LS status: x\r\n");
    const auto status =
        nlohmann::json::parse(RunIn(folder, "status @/site.ini --format json --prometheus @/m.prom").out);
    EXPECT_EQ(status["visits"]["last"].dump(),
              R"({"begin":"2026-11-20T02:00:00Z","end":"2026-11-20T02:03:04Z","ended":"whole","events":5,)"
              R"("log_lines":1,"number":2,"relays_reached":1,"result":null,"seconds":184,"signal":null})");
    EXPECT_EQ(
        status["visits"]["relays"][1].dump(),
        R"({"address":"10.0.0.6,2","events":0,"key":"RV002","last_reached":"2026-11-19T02:00:00Z",)"
        R"("missed_nights":1,"muted":null,"plant":"Feeder 7","reached":false,"relay":"AB12-2","seconds":0,"status":11,"status_text":"cannot \"open\"",)"
        R"("visited":true})");
    EXPECT_EQ(status["visits"]["since"], "2026-11-19T02:00:00Z");
    EXPECT_EQ(status["log"]["by_connection"][0]["connection"], "10.0.0.6 device 2");
    EXPECT_EQ(status["log"]["by_connection"][0]["key"], "RV002");
    const std::string metrics = folder.Read("m.prom");
    for (
        const char* line :
        {"ruvo_visit_timestamp_seconds{site=\"site\"} 1795140000\n",
         "ruvo_visit_duration_seconds{site=\"site\"} 184\n", "ruvo_visit_result{site=\"site\"} 0\n",
         "ruvo_visit_relays_reached{site=\"site\"} 1\n",
         "ruvo_relay_reached{site=\"site\",relay=\"AB12-2\",key=\"RV002\",plant=\"Feeder 7\"} 0\n",
         "ruvo_relay_last_reached_timestamp_seconds{site=\"site\",relay=\"AB12-2\",key=\"RV002\",plant=\"Feeder 7\"} 1795053600\n",
         "ruvo_relay_problems{site=\"site\",relay=\"AB12-2\",key=\"RV002\",plant=\"Feeder 7\"} 1\n",
         "ruvo_relay_events_fetched{site=\"site\",relay=\"AB12-1\",key=\"RV001\",plant=\"\"} 5\n"})
        EXPECT_TRUE(Contains(metrics, line));
}

TEST_F(CVisitStatus, WhatGoesOnIsNoVisitYet) {
    g_utcTime = {2026, 11, 20, 23, 29, 0};
    CVisitRecord record(folder.Path("ev"), folder.Path("site.ini"));
    record.Begin();
    const std::string said = RunIn(folder, "status @/site.ini --max-visit-age 0").out;
    EXPECT_TRUE(Contains(said, "A visit that began on 2026-11-20 23:29 is going on."));
    EXPECT_FALSE(Contains(said, "Last visit"));
    record.Add(Entry("RV002", "10.0.0.99,2", 0));
    record.End(SVisitLine{});
    const std::string changed = RunIn(folder, "status @/site.ini").out;
    EXPECT_TRUE(Contains(changed, "0 of 2 relays reached")) << "another address";
    EXPECT_FALSE(Contains(changed, "not reached since"));
    for (const char* line : {"status @/none.ini", "status @/ev", "status @/ev @/run.log --max-visit-age 1d"})
        EXPECT_EQ(RunIn(folder, line).status, 3) << line;
}

/// One step that a case names.
void CVisitStatus::Do(const std::string& step) {
    std::istringstream words(step);
    std::string what, rest;
    words >> what;
    std::getline(words >> std::ws, rest, '\0');
    if (what == "wait") {
        g_utcTime.minute += std::stoi(rest);
    } else if (what == "visit") {
        Visit(21, SVisitLine{});
        Visit(22, SVisitLine{}, false);
    } else if (what == "move") {
        WriteSite("10.0.0.7,2");
    } else if (what == "file") {
        folder.Write("site.mutes", rest);
    } else if (what == "folder") {
        std::filesystem::create_directories(folder.Native("site.mutes"));
    } else if (what != "-") {
        const SOutcome outcome = RunIn(folder, step);
        EXPECT_EQ(outcome.status, 0) << step << outcome.error;
    }
}

TEST_F(CVisitStatus, AMuteQuietsWhatIsKnownAlone) {
    static const std::string kLink = "Failed to open ethernet connection. Connection string: "
                                     "TNLC=\"RPCDll.Dll\",\"10.0.0.",
                             kStatus = "\",\"0\",\"2\",\"0\". P32LS status: x",
                             kSecond = " Connection details - IP address: 10.0.0.6, device address: 2, bus "
                                       "address: 0.";
    static const std::map<std::string, std::string> kLines{
        {"link", kLink + "6" + kStatus},
        {"link2", kLink + "7" + kStatus},
        {"other",
         "Test connection failed. Unable to connect to the device or password is invalid. Connection "
         "details - device IP: 10.0.0.5, device address: 1, bus address: 0."},
        {"password", "Invalid password." + kSecond},
        {"lost", "1 event taken from the relay, but not stored." + kSecond},
        {"unknown", "What?" + kSecond}};
    folder.Write("expect", "AB12-2\n");
    ForEachCase<4>("tools/mute_cases.txt", [&](auto& steps, auto& extra, auto& status, auto& said) {
        WriteSite("10.0.0.6,2");
        std::filesystem::remove_all(folder.Native("site.mutes"));
        Prepare("unreached 1");
        const auto line = kLines.find(extra);
        folder.Write("run.log", line == kLines.end() ? "" : "2026/11/20 23:00:00 " + line->second + "\r\n");
        for (std::size_t at = 0; at < steps.size();) {
            const std::size_t end = std::min(steps.find("; ", at), steps.size());
            Do(steps.substr(at, end - at));
            at = end + 2;
        }
        const SOutcome outcome =
            RunIn(folder, std::string("status @/site.ini") + (extra == "expect" ? " --expect @/expect" : ""));
        EXPECT_EQ(outcome.status, std::stoi(status)) << outcome.out;
        EXPECT_TRUE(Contains(outcome.out, said));
    });
}

TEST_F(CVisitStatus, MutesAreListedWithWhatBecameOfThem) {
    Prepare("unreached 1");
    ForEachCase<3>("tools/mute_mistakes.txt", [&](auto& words, auto& status, auto& said) {
        const SOutcome outcome = RunIn(folder, "mute " + words);
        EXPECT_EQ(outcome.status, std::stoi(status)) << outcome.error;
        EXPECT_TRUE(Contains(outcome.out + outcome.error, said));
    });
    const std::string site = folder.Native("site.ini"), why = "\"new\" CT\n[RV001]";
    EXPECT_EQ(RunTool({"mute", site, "RV002", "--until", "7d", "--why", why}).status, 0);
    const auto relay = nlohmann::json::parse(
        RunIn(folder, "status @/site.ini --format json --prometheus @/m.prom").out)["visits"]["relays"][1];
    EXPECT_EQ(
        relay["muted"].dump(),
        R"({"since":"2026-11-20T23:30:00Z","until":"2026-11-27T23:30:00Z","why":"\"new\" CT [RV001]"})");
    EXPECT_TRUE(
        Contains(folder.Read("m.prom"),
                 "ruvo_relay_muted{site=\"site\",relay=\"AB12-2\",key=\"RV002\",plant=\"Feeder 7\"} 1\n"));
    Visit(21, SVisitLine{});
    EXPECT_EQ(
        RunIn(folder, "mute --list @/site.ini").out,
        "key    address     relay   until             why               state\n"
        "RV002  10.0.0.6,2  AB12-2  2026-11-27 23:30  \"new\" CT [RV001]  void: the relay was reached on "
        "2026-11-21 02:00\n");
    EXPECT_EQ(RunIn(folder, "unmute @/site.ini RV001").status, 1);
}

} // namespace
} // namespace ruvo::test
