// The programs after a visit: what they get, and what is said of those that fail or hang.
#include "support/scratch_folder.h"

#include "tools/visit/after_visit.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>
#include <sstream>

namespace ruvo::test {
namespace {

TEST(AfterVisit, AProgramThatFailsOrHangsIsAWarning) {
    const CScratchFolder folder;
    const std::tuple<const char*, const char*, std::chrono::milliseconds, std::string, std::string> cases[] =
        {
            {"reads the digest", "#!/bin/sh\ncat; echo $RUVO_LOST lost", std::chrono::minutes(2),
             "digest\n2 lost\n", ""},
            {"fails", "#!/bin/sh\necho half; exit 3", std::chrono::minutes(2), "half\n",
             "ended with status 3\n"},
            {"hangs, with what it has started", "#!/bin/sh\nsleep 600 & sleep 600",
             std::chrono::milliseconds(20), "", "took too long and was killed\n"},
            {"is no program", "no", std::chrono::minutes(2), "", "\n"},
        };
    for (const auto& [name, script, most, wantedOut, wantedError] : cases) {
        folder.Write("program", script);
        std::filesystem::permissions(folder.Native("program"), std::filesystem::perms::owner_all);
        std::ostringstream outText, errorText;
        {
            CTextOutput out(outText), error(errorText);
            SConsole console{.in = std::cin, .out = out, .error = error};
            CVisitOutput output(console, false, false);
            CVisitControl control;
            RunAfterVisit({.paths = {folder.Path("program")}, .refused = {}},
                          {.variables = {{"RUVO_LOST", "2"}}, .digest = "digest\n"}, control, output, most);
        }
        EXPECT_EQ(outText.str(), wantedOut) << name;
        EXPECT_TRUE(errorText.str().ends_with(wantedError) && wantedError.empty() == errorText.str().empty())
            << name << ": " << errorText.str();
    }
}

} // namespace
} // namespace ruvo::test
