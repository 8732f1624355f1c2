// The built program from INI file to day files and error log.
#include "e2e/cases.h"
#include "e2e/program.h"
#include "support/case_table.h"

#include "platform/single_instance.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace ruvo::test {

TEST(EndToEnd, RunsOverEveryLink) {
    for (const SCase& test : kRunCases) {
        const CProgramRun run(test.substation, test.general, test.sections);
        EXPECT_EQ(run.Run(), "exit 0\n") << test.name;
        EXPECT_EQ(run.Log(), test.log) << test.name;
        EXPECT_EQ(run.Files(), test.files) << test.name;
    }
}

TEST(EndToEnd, TheLoginIsTraced) {
    const CProgramRun run(kWithLogin, "", "[RUVO_SERIAL]\nRV001=5\n" + kPassword);
    EXPECT_EQ(WithoutTimes(run.Run("RUVO_DEBUG_OUTPUT=stderr")), kLoginTrace + "exit 0\n");
}

TEST(EndToEnd, EveryLaterRunAppendsAndTheTimeZoneDoesNotMatter) {
    const CProgramRun run("state = \"delivered\"\n" + (kLink + Relay("serial = 5", kTrip + kTrip)) +
                              "[[fault]]\noperation = \"GetEvent\"\ncall = 2\nstatus = 15\n",
                          "", "[RUVO_SERIAL]\nRV001=5\n");
    const std::string before = UtcDate();
    run.Run("TZ=Pacific/Kiritimati");
    const std::string path = "ev/AB12-0001/AB12-0001-" + before + "-DEV.evt";
    if (before == UtcDate()) { // else midnight has passed: the file may be of either day
        EXPECT_EQ(run.Folder().Read(path), Header("000001") + Trip());
    }
    run.Run("TZ=Pacific/Honolulu");
    run.Run();
    std::string all;
    for (const auto& [name, bytes] : run.Files())
        all += bytes;
    if (before == UtcDate()) {
        EXPECT_EQ(all, Header("000001") + Trip() + Trip()) << "each event once, in two runs";
    }
}

TEST(EndToEnd, CheckOnlyModeShowsABoxAndTouchesNothing) {
    CProgramRun run(kPlain, "", "[RUVO_SERIAL]\nRV001=5\n");
    EXPECT_EQ(run.Shell("$RUVO -t $DIR/site.ini; echo exit $?"),
              "[Information] ruvo\nRuvo\nVersion Number: " RUVO_VERSION "\n\nINI file: " +
                  run.Folder().Native("site.ini") + "\n\nSuccess - No input errors found.\n\nexit 0\n");
    run.Folder().Write("substation.toml", "relay = 5\n");
    EXPECT_NE(
        run.Shell("${RUVO}ctl check $DIR/site.ini").find("/p32ls.so: loaded, but it refused to start ("),
        std::string::npos);
    EXPECT_FALSE(run.Folder().Has("ev") || run.Folder().Has("run.log"));
}

TEST(EndToEnd, WhatKeepsARunFromStarting) {
    const std::string sections = "[RUVO_SERIAL]\nRV001=5\n";
    ForEachCase<3>("e2e/start_failures.txt", [&](auto& setUp, auto& log, auto& server) {
        const CProgramRun run(kPlain, "", sections);
        const std::string bin = "BIN=" RUVO_BIN_DIR "\n";
        run.Shell(bin + setUp + "\n$RUVO $DIR/site.ini");
        EXPECT_EQ(run.Log(), log + "\n");
        const std::string want = run.Shell(bin + "echo \"$DIR/site.ini: " + server + "\"");
        EXPECT_TRUE(server.empty() ||
                    run.Shell("${RUVO}ctl check $DIR/site.ini").find(want) != std::string::npos)
            << want;
    });
    const CProgramRun run(kPlain, "", sections);
    const std::string alone = run.Shell("cp $RUVO $DIR/lonely; $DIR/lonely $DIR/site.ini; echo exit $?");
    EXPECT_EQ(alone,
              "[Error] lonely\noncrpc.dll or one of its dependencies is missing. Closing RUVO.\n\nexit 0\n");
    const std::string checked =
        run.Shell("cp " RUVO_BIN_DIR "/ruvoctl $DIR/lone; $DIR/lone check $DIR/site.ini; echo exit $?");
    EXPECT_TRUE(checked.starts_with("oncrpc.dll or one of its dependencies is missing. Closing RUVO.\n"))
        << checked;
    EXPECT_NE(checked.find("/oncrpc.so: cannot open shared object file"), std::string::npos) << checked;
    EXPECT_TRUE(checked.ends_with("exit 39\n")) << checked;
}

TEST(EndToEnd, StandardErrorTellsWhatTheLogCannot) {
    const CProgramRun run(kPlain, "", "[RUVO_SERIAL]\nRV001=6\n");
    const struct {
        const char* name;
        const char* command;
        const char* want;
    } rows[] = {
        {"a log on a full disk", "ulimit -f 0; $RUVO $DIR/site.ini", "run.log: File too large. Line lost: "},
        {"an INI file that is not there", "$RUVO $DIR/none.ini",
         "/none.ini: the INI file cannot be read; no relay is visited\n"},
        {"an argument without effect", "$RUVO --help $DIR/site.ini",
         "ruvo: --help: argument without effect; expected FILE.ini, or -t to check only\n"},
    };
    for (const auto& row : rows) {
        const std::string told = run.Shell(row.command + std::string(" 2>&1 >/dev/null; echo exit $?"));
        EXPECT_TRUE(told.starts_with("ruvo: ") && told.ends_with("\nexit 0\n")) << row.name << ": " << told;
        EXPECT_NE(told.find(row.want), std::string::npos) << row.name << ": " << told;
    }
    const std::string unread =
        run.Shell("exec 8> >(exit 0); wait $!; $RUVO --help $DIR/site.ini 2>&8; echo exit $?");
    EXPECT_EQ(unread, "exit 0\n") << "nobody reads it any more";
    const std::string made =
        run.Shell("ulimit -f 0; ${RUVO}ctl new $DIR/new.ini --link serial --relay 5 2>&1; echo exit $?");
    EXPECT_EQ(made, "ruvoctl: cannot write the new text; nothing was changed (File too large)\nexit 1\n");
}

TEST(EndToEnd, NoRunBesideAnother) {
    const CProgramRun run(kPlain, "", "[RUVO_SERIAL]\nRV001=5\n");
    setenv("RUVO_LOCK_DIR", run.Folder().Native().c_str(), 1);
    CInstanceMarker marker;
    ASSERT_EQ(marker.Claim("ruvo:3B38A5F0-71B0-11d3-9C2B-00600816C2BEHX"), EInstanceClaim::Claimed);
    EXPECT_EQ(run.Run(), "exit 0\n");
    EXPECT_EQ(run.Log(), "Only one instance can be running at one time.\n");
    EXPECT_FALSE(run.Folder().Has("trace.txt")) << "no relay was contacted";
    EXPECT_NE(run.Shell("$RUVO -t $DIR/site.ini").find("Success"), std::string::npos) << "beside a run";
    unsetenv("RUVO_LOCK_DIR");
}

TEST(EndToEnd, WithoutArgumentsItTakesTheIniFileBesideIt) {
    const CProgramRun run(kPlain, "", "");
    run.Folder().Write("site.ini", "[RUVO_GENERAL]\nEventRootDir=ev\n[RUVO_SERIAL]\nRV001=5\n");
    EXPECT_EQ(run.Shell("mkdir $DIR/bin; mv $DIR/site.ini $DIR/bin/RUVO.ini; cd $(dirname $RUVO)\n"
                        "cp ruvo p32ls.so oncrpc.so $DIR/bin; cd /; $DIR/bin/ruvo"),
              "");
    const std::map<std::string, std::string> files{{kDay, Header("000001") + Trip()}};
    EXPECT_EQ(FilesBelow(run.Folder().Native("bin/ev")), files);
}

TEST(EndToEnd, TheDemoSubstationKeepsItsPromises) {
    const std::string example = RUVO_TEST_DATA "/../examples/substation/";
    const CProgramRun run("", "", "");
    const std::string counts =
        run.Shell("cd '" + example +
                  "'; export P32LS_SUBSTATION=$PWD/substation.toml\n"
                  "for link in serial modem ethernet; do\n"
                  "sed \"s|^EventRootDir=.*|EventRootDir=$DIR/ev|; "
                  "s|^ErrorLogPathname=.*|ErrorLogPathname=$DIR/run.log|\" "
                  "$link.ini >$DIR/$link.ini; $RUVO $DIR/$link.ini\ndone\n"
                  "cut -d'|' -f2 promised-events.txt | while read -r relay; do\n"
                  "echo \"$(${RUVO}ctl events --format json \"$DIR/ev/$relay\" | wc -l)|$relay\"\ndone");
    EXPECT_EQ(run.Log(), FileBytes(example + "promised-log.txt"));
    EXPECT_EQ(counts, FileBytes(example + "promised-events.txt"));
}

TEST(EndToEnd, OddIniFilesNeverBringItDown) {
    const CProgramRun run(kPlain, "", "[RUVO_SERIAL]\nRV001=5\n");
    ForEachCase<2>("e2e/odd_ini_files.txt", [&](auto& make, auto& opens) {
        const std::string output = run.Shell(make + "\n$RUVO -t $DIR/site.ini; echo exit $?");
        EXPECT_EQ(output.find("Can't open INI file.\n") != std::string::npos, opens.empty()) << output;
        EXPECT_NE(output.find("exit 0\n"), std::string::npos);
    });
}

TEST(EndToEnd, AFullDiskAndAVanishedRootAreLoggedAndCostNoEarlierRecord) {
    const CProgramRun run(kLink + Relay("serial = 5", kTrip + "[relay.generate]\ncount = 200\nseed = 1\n") +
                              Relay("serial = 6", kTrip, "0002"),
                          "", "[RUVO_SERIAL]\nRV001=5\nRV002=6\n");
    const std::string today = UtcDate();
    const std::string before = run.Shell(
        "rm $DIR/substation.toml.tmp 2>/dev/null; sed -i '/^trace/d' $DIR/substation.toml; $RUVO $DIR/site.ini\n"
        "day=$(ls $DIR/ev/AB12-0001/*-DEV.evt); tail -c +82 $day >$DIR/records\n"
        "while [ $(wc -c <$day) -lt 400000 ]; do cat $DIR/records >>$day; done; cp $day $DIR/before\n"
        "${RUVO}ctl events --format json $day; rm -r $DIR/ev/AB12-0002 $DIR/run.log\n"
        "ulimit -f $(($(wc -c <$day) / 1024 + 4)); $RUVO $DIR/site.ini");
    if (today != UtcDate())
        GTEST_SKIP() << "midnight has passed";
    const std::string earlier = run.Folder().Read("before");
    const std::string file = run.Files()[kDay];
    EXPECT_TRUE(file.starts_with(earlier) && file.size() <= earlier.size() + 4096);
    const std::string read = run.Shell("${RUVO}ctl events --format json $DIR/ev/AB12-0001; echo");
    const auto count = [](const std::string& text) {
        std::size_t records = 0;
        for (std::size_t at = 0; (at = text.find("\"relay\":", at)) != std::string::npos; ++at)
            ++records;
        return records;
    };
    const std::size_t stored = count(read) - count(before);
    EXPECT_GT(stored, 0U) << "the records that had room";
    EXPECT_EQ(read.find("\"error\":"), std::string::npos) << "no torn record behind them";
    EXPECT_EQ(run.Files()["AB12-0002/AB12-0002-DATE-DEV.evt"].size(),
              Header("000001").size() + Trip().size());
    EXPECT_NE(run.Log().find("Failed to save event file"), std::string::npos);
    EXPECT_NE(run.Log().find(std::to_string(201 - stored) + " events wait in the journal for the next run. " +
                             kSerialDetails),
              std::string::npos);
}

TEST(EndToEnd, StreamsThatAreClosedOrThatNobodyReadsCostNoEvent) {
    const std::string silent =
        "exec 3> >(true); wait $!; export RUVO_DEBUG_OUTPUT=stderr\n"; // 3: nobody reads
    for (const char* const streams : {"2>&3", ">&3 2>&3", "2>&-", "<&- 2>&-", ">&- 2>&-", "<&- >&- 2>&-"}) {
        const CProgramRun run(kPlain, "", "[RUVO_SERIAL]\nRV001=5\n");
        run.Shell(silent + "($RUVO -t $DIR/site.ini && $RUVO $DIR/site.ini) " + streams +
                  "; echo $? >$DIR/status; cat $DIR/*.lock >$DIR/locks");
        EXPECT_EQ(run.Folder().Read("status"), "0\n") << streams;
        EXPECT_EQ(run.Folder().Read("locks"), "") << streams; // the first file that is opened
        EXPECT_EQ(run.Files()[kDay], Header("000001") + Trip()) << streams;
        EXPECT_EQ(run.Log(), "") << streams;
    }
}

TEST(EndToEnd, TheCompanionTellsTroubleApartFromItsFindings) {
    const CProgramRun run(kPlain, "", "[RUVO_SERIAL]\nRV001=5\n");
    run.Run();
    EXPECT_EQ(run.Shell("cd $DIR; touch run.log; ${RUVO}ctl archive ev --sqlite a.sqlite >archived\n"
                        "for c in 'events ev' 'find a.sqlite trip' 'status ev run.log'; do\n"
                        "${RUVO}ctl $c >taken; echo -n \"$? \"; ${RUVO}ctl $c >/dev/full 2>told; echo $?\n"
                        "done"),
              "0 1\n0 2\n0 3\n")
        << "what nobody could read is no verdict";
    EXPECT_NE(run.Shell("${RUVO}ctl find $DIR/none.sqlite trip; echo $?").find("check that it exists"),
              std::string::npos);
    const std::string many = run.Shell(
        "cd $DIR; for i in {1..254}; do printf '2026/11/25 01:00:00 Invalid password. Connection details - "
        "COM Port: COM1, device address: %d.\\r\\n' $i; done >many.log\n"
        "${RUVO}ctl status ev many.log --since 2026-11-01");
    EXPECT_LT(std::ranges::count(many, '\n'), 60) << many;
    EXPECT_NE(many.find("254 problems"), std::string::npos) << many;
    EXPECT_NE(many.find("234 more"), std::string::npos) << many;
}

} // namespace ruvo::test
