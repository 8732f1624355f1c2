// ruvoctl paths: where events and problems go, as a run resolves it.
#include "support/case_table.h"
#include "support/scratch_folder.h"
#include "tools/run_tool.h"

#include "platform/files.h"
#include "platform/full_path.h"
#include "platform/modules.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace ruvo::test {

TEST(PathsCommand, ResolvesThemAsARunDoes) {
    const CScratchFolder folder;
    const std::filesystem::path beside = std::filesystem::path(SystemPath(ProgramPath())).parent_path();
    const auto whole = [&](std::string path) {
        for (const auto& [word, meant] : {std::pair("BESIDE", beside.string()),
                                          {"ABOVE", beside.parent_path().string()},
                                          {"@", folder.Native()}})
            if (path.starts_with(word))
                path.replace(0, std::string_view(word).size(), meant);
        return path;
    };
    folder.Write("registry.ini",
                 "[SOFTWARE\\Halvex\\Norvo Q7 Studio]\nQ7SecurityLogs=" + folder.Native("all") + "\n");
    setenv("RUVO_REGISTRY_USER", folder.Native("none").c_str(), 1);
    const std::string before = CurrentFolder();
    ForEachCase<4>("tools/paths_cases.txt", [&](auto& lines, auto& events, auto& log, auto& source) {
        setenv("RUVO_REGISTRY_MACHINE", folder.Native(source.empty() ? "none" : "registry.ini").c_str(), 1);
        folder.Write("site.ini", "[RUVO_GENERAL]\n" + lines);
        const std::string ini = folder.Native("site.ini");
        EXPECT_EQ(RunTool({"paths", ini}).out, "events: " + whole(events) + "\nlog: " + whole(log) + "\n");
        EXPECT_EQ(RunTool({"paths", "--of", "log", ini}).out, whole(log) + "\n");
        EXPECT_EQ(RunTool({"paths", ini, "--of", "events"}).out, whole(events) + "\n");
        EXPECT_EQ(CurrentFolder(), before);
    });
    EXPECT_FALSE(folder.Has("all/RUVO")); // nothing is made
    for (const std::string& ini : {folder.Native("missing.ini"), std::string()}) {
        const SOutcome outcome = RunTool({"paths", ini});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
    }
}

} // namespace ruvo::test
