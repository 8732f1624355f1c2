// Whether the calls of the comms server are recorded, and where not.
#include "support/fake_system.h"
#include "support/scratch_folder.h"
#include "support/scripted_server.h"

#include "app/call_recording.h"
#include "app/connection_test.h"
#include "ledger/root_folder.h"
#include "link/recording/recorded_connection.h"
#include "log/error_log.h"

#include <gtest/gtest.h>

namespace ruvo {

extern int g_runtimeStarts; // the connection test's tests stand in for the runtime

TEST(CallRecording, IsAskedForAndKeptAwayFromEvents) {
    const CScratchFolder folder;
    for (const char* name : {"RUVO_STATE_DIR", "RUVO_REGISTRY_USER", "RUVO_REGISTRY_MACHINE"})
        setenv(name, folder.Native(name).c_str(), 1);
    std::filesystem::create_directory(folder.Native("ev"));
    const std::string root = folder.Path("ev");
    const std::string value = "[SOFTWARE\\Halvex\\Norvo Q7 Studio]\nRUVO_RECORD=";
    folder.Write("RUVO_REGISTRY_MACHINE", value + "all.rec\n");
    EXPECT_EQ(AskedRecording(), "all.rec");
    folder.Write("RUVO_REGISTRY_USER", value + "own.rec\n");
    EXPECT_EQ(AskedRecording(), "own.rec");

    setenv("RUVO_RECORD", folder.Native("ev/x.rec").c_str(), 1);
    g_standardError.clear();
    PlanRecording(folder.Path("new"));
    EXPECT_EQ(PlannedRecording().path + g_standardError, root + "\\x.rec");
    EXPECT_EQ(PlannedRecording().leastFree, std::uint64_t{64} * 1024 * 1024);
    test::CScriptedServer server;
    server.refuseConnection = true;
    g_runtimeStarts = 2;
    const std::string ini = folder.Write("site.ini", "[RUVO_GENERAL]\nEventRootDir=" + root + "\n");
    EXPECT_EQ(TestConnection(ini.c_str(), "RV001"), EConnectionTestResult::CommsServerFailed);
    EXPECT_EQ(PlannedRecording().path, "") << "the event root of a test";
    ResetErrorLog();

    PlanRecording(folder.Path("new"));
    EXPECT_TRUE(PrepareRootFolder(FolderOfJournals(root), root));
    g_standardError.clear();
    PlanRecording(folder.Path("new"));
    EXPECT_EQ(PlannedRecording().path, "") << "the event root of another run";
    EXPECT_TRUE(g_standardError.starts_with("ruvo: ")) << g_standardError;
    EXPECT_TRUE(g_standardError.ends_with("x.rec: no recording is made: it would be in an event root"));
    setenv("RUVO_STATE_DIR", folder.Native("site.ini").c_str(), 1);
    PlanRecording(folder.Path("new"));
    EXPECT_TRUE(PlannedRecording().path.empty() &&
                g_standardError.ends_with("site.ini cannot be read in whole"));
    g_standardError.clear();
}

} // namespace ruvo
