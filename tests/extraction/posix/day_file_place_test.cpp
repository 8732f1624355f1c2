// What stands in the day file's place, on a system with links, pipes and a shell.
#include "extraction/extraction_fixture.h"

#include <cstdlib>

namespace ruvo::test {

TEST_F(Extraction, WhatStandsInTheDayFilesPlaceLeavesTheEventsInTheRelay) {
    const std::string device = folder.Native("root/AB12-00001234");
    const std::string file = device + "/AB12-00001234-2026-11-16-DEV.evt";
    const std::string isLink = "The relay's folder " + device + " is a link";
    const std::string day = "Day file " + file;
    const std::string isOther = day + " is not a regular file in a folder";
    const struct {
        std::string setUp; ///< shell, in $OUT, a folder outside
        std::string refusal;
    } cases[] = {{"ln -s $OUT $DEVICE", isLink},
                 {"ln -s $OUT/none $DEVICE", isLink},
                 {": > $DEVICE", isOther},
                 {"mkdir $DEVICE && ln -s $OUT/victim $FILE", day + " is a link"},
                 {"mkdir $DEVICE && ln -s $OUT/none $FILE", day + " is a link"},
                 {"mkdir $DEVICE && mkfifo $FILE", isOther},
                 {"mkdir -p $FILE", isOther},
                 {"mkdir $DEVICE && : > $FILE", ""},
                 {"mv $ROOT $ROOT.moved && ln -s $ROOT.moved $ROOT", ""}}; // the root may be a link
    for (const auto& test : cases) {
        const std::string names = "OUT=" + folder.Native("out") + " ROOT=" + folder.Native("root") +
                                  " DEVICE=" + device + " FILE=" + file + "\n";
        const std::string prepare = "rm -rf $OUT $ROOT* && mkdir $OUT $ROOT && echo x > $OUT/victim && ";
        ASSERT_EQ(std::system((names + prepare + test.setUp).c_str()), 0) << test.setUp;
        server.events = {Event(1, {"240107", TextHex("f")})};
        SExtractionReport report;
        server.calls.clear();
        ExtractEventsToFile(5, folder.Path("root"), kNoEventLimit, &report);
        EXPECT_EQ(report.refusal.value_or(SRefusal{}).subject, test.refusal) << test.setUp;
        EXPECT_EQ(server.events.size(), test.refusal.empty() ? 0U : 1U) << test.setUp;
        EXPECT_EQ(report.recordsWritten, test.refusal.empty() ? 1U : 0U) << test.setUp;
        EXPECT_TRUE(folder.Read("out/victim") == "x\n" && !folder.Has("out/none")) << test.setUp;
    }
}

} // namespace ruvo::test
