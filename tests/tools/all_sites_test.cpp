// ruvoctl status --all: every site of a folder, each in its own environment.
#include "support/fake_system.h"
#include "support/scratch_folder.h"
#include "tools/run_tool.h"
#include "tools/visit_entries.h"

#include "platform/environment.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace ruvo::test {
namespace {

class AllSites : public testing::Test {
protected:
    AllSites() {
        SetEnvironmentValue("RUVO_STATE_DIR", folder.Native("state"));
        setenv("RUVO_REGISTRY_USER", folder.Native("none").c_str(), 1);
        setenv("RUVO_REGISTRY_MACHINE", folder.Native("none").c_str(), 1);
        g_localTime = SCalendarTime{2026, 11, 20, 23, 30, 0};
        for (const char* made : {"sites", "sites/folder.ini", "north"})
            std::filesystem::create_directories(folder.Native(made));
        folder.Write("sites/registry.ini", "");
        folder.Write("sites/notes.txt", "");
        std::filesystem::create_symlink(folder.Native("none"), folder.Native("sites/gone.ini"));
        WriteSite("north", folder.Native("north"));
        // Where it writes stands in a registry that only its environment names.
        WriteSite("south", "");
        folder.Write("south.reg",
                     "[SOFTWARE\\Halvex\\Norvo Q7 Studio]\nQ7SecurityLogs=" + folder.Native("all") + "\n");
        folder.Write("sites/south.env", "RUVO_REGISTRY_MACHINE=" + folder.Native("south.reg") + "\n");
        chmod(folder.Native("sites/south.env").c_str(), 0600);
        WriteSite("west", folder.Native("west"));
    }

    void WriteSite(const std::string& name, const std::string& events) {
        folder.Write("sites/" + name + ".ini",
                     "[RUVO_GENERAL]\nUseEthernet=1\nUseModem=0\nEventRootDir=" + events +
                         "\nErrorLogPathname=" + folder.Native(name + ".log") +
                         "\n[RUVO_ETHERNET]\nRV001=10.0.0.5,1\n");
    }
    /// On the 20th at 02:00.
    void Visit(const std::string& name, const std::string& root, bool isReached) {
        std::filesystem::create_directories(folder.Native(root));
        g_utcTime = {2026, 11, 20, 2, 0, 0};
        CVisitRecord record(folder.Path(root), folder.Path("sites\\" + name + ".ini"));
        record.Begin();
        record.Add(EntryNow("RV001", "10.0.0.5,1", isReached, "", isReached ? "Feeder 7" : ""));
        SVisitLine end;
        end.ended = ERunEnd::Whole;
        record.End(end);
        g_utcTime = {2026, 11, 20, 23, 30, 0};
    }
    SOutcome Status(const std::string& more = "") { return RunIn(folder, "status --all @/sites " + more); }

    CScratchFolder folder;
};

TEST_F(AllSites, EachIsALineTheWorstFirst) {
    Visit("north", "north", true);
    Visit("south", "all/RUVO", false);
    const SOutcome outcome = Status("--format json --prometheus @/m.prom");
    const auto all = nlohmann::json::parse(outcome.out);
    std::string said = all["state"].get<std::string>() + ":";
    for (const auto& site : all["sites"])
        said += " " + site["site"].get<std::string>() + " " + site["state"].get<std::string>() + ",";
    EXPECT_EQ(said, "unknown: gone unknown, west unknown, south warning, north good,") << outcome.out;
    EXPECT_EQ(outcome.status, 3);
    EXPECT_FALSE(Contains(RunIn(folder, "paths @/sites/south.ini --of events").out, folder.Native()))
        << "the environment is that of the caller again";
    const std::string text = Status().out;
    EXPECT_TRUE(text.starts_with("UNKNOWN: 4 sites in " + folder.Native("sites") +
                                 ": 2 unknown, 1 warning, 1 good\n\nUNKNOWN  gone   " +
                                 folder.Native("sites/gone.ini") + ": the file cannot be read"))
        << text;
    EXPECT_TRUE(Contains(text, "\nWARNING  south  RV001 (10.0.0.5,1) not reached since visits are recorded "
                               "(2026-11-20), 1 night\n"));
    EXPECT_TRUE(Contains(text, "\nGOOD     north  last visit 2026-11-20 02:00 (0 s), 1 of 1 relay reached"));
    const std::string metrics = folder.Read("m.prom");
    for (const char* line :
         {"ruvo_site_state{site=\"gone\"} 3\nruvo_site_state{site=\"west\"} 3\n",
          "ruvo_relay_reached{site=\"south\",relay=\"RV001\",key=\"RV001\",plant=\"\"} 0\n"
          "ruvo_relay_reached{site=\"north\",relay=\"RV001\",key=\"RV001\",plant=\"Feeder 7\"} 1\n"})
        EXPECT_TRUE(Contains(metrics, line));
    EXPECT_FALSE(Contains(metrics, "ruvo_log_lines{site=\"gone\"}")) << "nobody has read it";
}

TEST_F(AllSites, WhatIsMissingIsSaid) {
    for (const char* line : {"status --all @/none", "status --all @/north"}) {
        const SOutcome outcome = RunIn(folder, line);
        EXPECT_EQ(outcome.status, 3) << line;
        EXPECT_TRUE(outcome.out.starts_with("UNKNOWN: " + folder.Native())) << outcome.out;
    }
    EXPECT_EQ(Status("--expect @/x").out, "UNKNOWN: usage error in ruvoctl status; see standard error\n");
    EXPECT_EQ(RunTool({"status"}).status, 3);
}

} // namespace
} // namespace ruvo::test
