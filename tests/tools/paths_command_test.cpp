// ruvoctl paths: where events and problems go, as a run resolves it.
#include "support/scratch_folder.h"
#include "tools/run_tool.h"

#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/modules.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace ruvo::test {

TEST(PathsCommand, ResolvesThemAsARunDoes) {
    struct SCase {
        const char* name;
        std::string general;
        std::string events;
        std::string log;
        bool usesRegistry = false;
    };
    const CScratchFolder folder;
    const std::string program = SystemPath(ProgramPath());
    const std::string beside = program.substr(0, program.rfind('/') + 1);
    const SCase cases[] = {
        {"whole paths of both forms", "EventRootDir=/srv/ev\nErrorLogPathname=C:\\srv\\x.log\n", "/srv/ev",
         "/srv/x.log"},
        {"no log", "EventRootDir=/srv/ev\n", "/srv/ev", "/srv/ev/RUVO_Errors.log"},
        {"relative ones", "EventRootDir=ev\nErrorLogPathname=..\\x.log\n", beside + "ev",
         beside.substr(0, beside.rfind('/', beside.size() - 2) + 1) + "x.log"},
        {"the registry's", "EventRootDir=/srv/ev\n", folder.Native("all/RUVO"),
         folder.Native("all/RUVO/RUVO_Errors.log"), true},
    };
    folder.Write("registry.ini",
                 "[SOFTWARE\\Halvex\\Norvo Q7 Studio]\nQ7SecurityLogs=" + folder.Native("all") + "\n");
    setenv("RUVO_REGISTRY_USER", folder.Native("none").c_str(), 1);
    const std::string before = CurrentFolder();
    for (const SCase& row : cases) {
        SCOPED_TRACE(row.name);
        setenv("RUVO_REGISTRY_MACHINE", folder.Native(row.usesRegistry ? "registry.ini" : "none").c_str(), 1);
        folder.Write("site.ini", "[RUVO_GENERAL]\n" + row.general);
        const std::string ini = folder.Native("site.ini");
        EXPECT_EQ(RunTool({"paths", ini}).out, "events: " + row.events + "\nlog: " + row.log + "\n");
        EXPECT_EQ(RunTool({"paths", "--of", "log", ini}).out, row.log + "\n");
        EXPECT_EQ(RunTool({"paths", ini, "--of", "events"}).out, row.events + "\n");
        EXPECT_EQ(CurrentFolder(), before);
    }
    EXPECT_FALSE(folder.Has("all/RUVO")); // nothing is made
    for (const std::string& ini : {folder.Native("missing.ini"), std::string()}) {
        const SOutcome outcome = RunTool({"paths", ini});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
    }
}

} // namespace ruvo::test
