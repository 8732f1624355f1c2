// ruvoctl relays: INI file, records of visits and day files in one line for each relay.
#include "support/fake_system.h"
#include "support/scratch_folder.h"
#include "tools/day_files.h"
#include "tools/run_tool.h"
#include "tools/visit_entries.h"

#include "platform/environment.h"

#include <gtest/gtest.h>

namespace ruvo::test {
namespace {

class RelaysCommand : public testing::Test {
protected:
    RelaysCommand() {
        SetEnvironmentValue("RUVO_STATE_DIR", folder.Native("state"));
        folder.Write("site.ini", "[RUVO_GENERAL]\nUseEthernet=1\nUseModem=0\nEventRootDir=" +
                                     folder.Native("ev") + "\nErrorLogPathname=" + folder.Native("run.log") +
                                     "\n[RUVO_ETHERNET]\nRV001=10.0.0.5,1\nRV002=10.0.0.6,2\n");
        g_utcTime = {2026, 11, 20, 2, 0, 0};
    }

    void Visit() {
        std::filesystem::create_directories(folder.Native("ev/AB12-1"));
        CVisitRecord record(folder.Path("ev"), folder.Path("site.ini"));
        record.Begin();
        record.Add(EntryNow("RV001", "10.0.0.5,1", true, "AB12-1", "Feeder \xC3\xBC"));
        SVisitEntry missed;
        missed.key = "RV002";
        missed.address = "10.0.0.6,2";
        record.Add(missed);
        record.End({});
        folder.Write("ev/AB12-1/AB12-1-2026-11-18-DEV.evt", kHeader + Simple(At(30, 3), "Old"));
        folder.Write("ev/AB12-1/AB12-1-2026-11-19-DEV.evt",
                     kHeader + Simple(At(19, 3), "New") + Simple(At(19, 2), "x") + Simple(At(31, 2), "When"));
    }
    SOutcome Relays(const std::string& more = "") { return RunIn(folder, "relays @/site.ini " + more); }

    CScratchFolder folder;
};

TEST_F(RelaysCommand, JoinsWhatIsKnown) {
    Visit();
    EXPECT_EQ(
        Relays().out,
        "KEY    LINK      ADDRESS     RELAY   PLANT     REACHED  LAST REACHED      LAST "
        "EVENT           REMARK\n"
        "RV001  ethernet  10.0.0.5,1  AB12-1  Feeder \xC3\xBC  yes      2026-11-20 02:00  "
        "2026-11-19 03:12:01\n"
        "RV002  ethernet  10.0.0.6,2  -       -         no       -                 -                    not reached for 1 "
        "night\n");
    EXPECT_EQ(
        Relays("--format json --match feeder").out,
        "{\"site\":\"site\",\"key\":\"RV001\",\"link\":\"ethernet\",\"address\":\"10.0.0.5,1\",\"relay\":"
        "\"AB12-1\",\"plant\":\"Feeder \xC3\xBC\",\"description\":\"a\\\\x07\\\\x1B[2J\",\"model\":"
        "\"\xEF\xBF\xBD\\\\\",\"last_reached\":\"2026-11-20T02:00:00Z\",\"last_event\":"
        "\"2026-11-19T03:12:01.234\",\"last_file\":\"AB12-1-2026-11-19-DEV.evt\",\"reached\":true,"
        "\"missed_nights\":0,\"muted_until\":null}\n");
    EXPECT_TRUE(Relays("--format csv --match RV002")
                    .out.ends_with("\r\nsite,RV002,ethernet,\"10.0.0.6,2\",,,,,,,,false,1,\r\n"));
    const SOutcome none = Relays("--match nix");
    EXPECT_EQ(none.out + none.error,
              "No relay matches \"nix\". There are: Feeder \xC3\xBC (RV001), RV002 (10.0.0.6,2).\n");
    EXPECT_EQ(none.status, 0);
}

TEST_F(RelaysCommand, WhatIsNotKnownIsSaid) {
    const SOutcome fresh = Relays();
    EXPECT_EQ(fresh.status, 0);
    EXPECT_TRUE(Contains(fresh.error, "no visit is recorded, so that no relay has a name; looked in "));
    EXPECT_TRUE(Contains(fresh.out, "RV002  ethernet  10.0.0.6,2  -"));
    folder.Write("state", ""); // what is no folder cannot be looked into
    EXPECT_EQ(Relays().status, 1);
    EXPECT_EQ(RunIn(folder, "relays @/none.ini").status, 1);
}

} // namespace
} // namespace ruvo::test
