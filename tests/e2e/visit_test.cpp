// The runner of the extractor: what it says of a visit, and with which status it ends.
#include "e2e/cases.h"
#include "e2e/program.h"

#include <gtest/gtest.h>

#include <regex>
#include <unistd.h>

namespace ruvo::test {

const std::string kTools = "visit() { exec " RUVO_BIN_DIR "/ruvoctl visit \"$@\"; }\n"
                           "events() { until [ \"$(grep -c ^GetEvent $DIR/trace.txt 2>/dev/null)\" -ge $1 ] "
                           "2>/dev/null; do sleep 0.02; done; }\n";

const std::string kMissing = kFailed + "Connection details - COM Port: COM1, device address: 4.\n";

/// What the visit prints, without times and paths that differ, and its status.
static std::string Visit(const CProgramRun& run, const std::string& script) {
    const std::string printed = run.Shell(kTools + script);
    const std::string masked = std::regex_replace(
        printed, std::regex(R"(\d+/\d+/\d+ \d+:\d+:\d+ |process \d+|\d+-\d+-\d+ \d+:\d+)"), "");
    return std::regex_replace(masked, std::regex(run.Folder().Native()), "DIR");
}

TEST(Visit, EndsWithAStatusOfItsOwn) {
    const CProgramRun run(kPlain, "", "[RUVO_SERIAL]\nRV001=5\n");
    EXPECT_EQ(Visit(run, "(visit $DIR/site.ini); echo $?"), "0\n");
    EXPECT_EQ(Visit(run, "(visit $DIR/site.ini --check); echo $?"), "Success - No input errors found.\n0\n");
    EXPECT_EQ(Visit(run, "(visit $DIR/site.ini --test rv001); echo $?"),
              "The relay answered, and the password, if one was asked for, was accepted.\n0\n");
    EXPECT_EQ(Visit(run, "(visit $DIR/site.ini --test rv002); echo $?"),
              "The key is not an entry of the section of the configured link type.\n3\n");
    EXPECT_EQ(Visit(run, "echo COMMS KEY=hidden > $DIR/site.env; (visit $DIR/site.ini); echo $?"),
              "ruvoctl: DIR/site.env: line 1: ignored; expected NAME=value with a permitted name\n"
              "Success - No input errors found.\n2\n");
    run.Shell("rm $DIR/site.env; sed -i 's/^RV001.*/RV000=4/' $DIR/site.ini");
    EXPECT_EQ(Visit(run, "(visit $DIR/site.ini); echo $?"), kMissing + "1\n");
    EXPECT_EQ(
        Visit(run, "(RUVO_STATE_DIR=/etc/passwd visit $DIR/site.ini) >$DIR/out; echo $?; tail -n 1 $DIR/out"),
        "2\n" + kMissing);
    EXPECT_EQ(Visit(run, "(visit $DIR/none.ini); echo $?"), "ruvoctl: DIR/none.ini: no such file\n2\n");
    EXPECT_EQ(Visit(run, "(visit $DIR/site.conf); echo $?"),
              "ruvoctl: DIR/site.conf: the name of an INI file must end in .ini\n2\n");
    run.Shell("sed -i s/RV000=4/RV000=x/ $DIR/site.ini");
    EXPECT_TRUE(Visit(run, "(visit $DIR/site.ini); echo $?").ends_with("\n2\n"));
}

TEST(Visit, ShowsHowFarItIs) {
    const CProgramRun run(kPlain, "", "[RUVO_SERIAL]\nRV000=4\nRV001=5\n");
    const std::string journal =
        Visit(run, "echo > $DIR/out; export JOURNAL_STREAM=$(stat -c %d:%i $DIR/out)\n"
                   "(visit $DIR/site.ini) >>$DIR/out; echo $?; cat $DIR/out");
    EXPECT_EQ(
        std::regex_replace(journal, std::regex("00:\\d\\d"), "TIME"),
        "1\n\n<4>RV000 (4): not reached; P32LS Error - device is either not connected or not responding\n"
        "<6>Plant (RV001): 1 event\n<6>1 of 2 relays reached, 1 event, TIME\n<4>" +
            kMissing);
    const std::string terminal = Visit(
        run, "script -qec '" RUVO_BIN_DIR "/ruvoctl visit $DIR/site.ini' /dev/null </dev/null | tr -d '\\r'");
    EXPECT_EQ(std::regex_replace(terminal, std::regex("\x1B\\[K|relay .*?00:\\d\\d|00:\\d\\d"), ""),
              "1 of 2 relays reached, 1 event, \n" + kMissing);
}

TEST(Visit, IsNotMadeBadByAnotherStart) {
    const CProgramRun run(kLink + Relay("serial = 5", kTrip + kTrip) +
                              "[[fault]]\noperation = \"GetEvent\"\ncall = 2\ndelay = 2500\n",
                          "", "[RUVO_SERIAL]\nRV001=5\n");
    EXPECT_EQ(Visit(run, "visit $DIR/site.ini >$DIR/first & p=$!; events 1; $RUVO $DIR/site.ini\n"
                         "(visit $DIR/site.ini); echo $?; wait $p; echo $?; cat $DIR/first"),
              "ruvoctl: DIR/site.ini:  has been visiting this site since ; no relay was visited\n4\n0\n"
              "Only one instance can be running at one time.\n");
}

TEST(Visit, IsRepeatedForRelaysWithoutAnAnswer) {
    const std::string counts =
        "; echo $?; grep -o '\"attempt\":[0-9]*\\|\"ini\":[^,]*\\|\"key\":\"[^\"]*' $DIR/state/*/visits.ndjson; "
        "ls $DIR/*.ini\n";
    const std::string first = "\"ini\":\"DIR/site.ini\"\n\"attempt\":1\n\"key\":\"RV000\n";
    const std::string second = "\"ini\":\"DIR/site.ini\"\n\"attempt\":2\n\"key\":\"RV000\n";
    {
        const CProgramRun run(kLink + Relay("serial = 5", kTrip + kTrip) +
                                  "[[fault]]\noperation = \"GetEvent\"\ncall = 2\ndelay = 1500\n",
                              "", "[RUVO_SERIAL]\nRV000=4\nRV001=5\n");
        run.Folder().Write("more.toml", Relay("serial = 4", kTrip, "0002"));
        EXPECT_EQ(Visit(run, "visit $DIR/site.ini --retry 2 --after 0s & p=$!; events 1; cat $DIR/more.toml "
                             ">>$DIR/substation.toml; wait $p" +
                                 counts),
                  kMissing + "0\n" + first + "\"key\":\"RV001\n" + second + "DIR/site.ini\n");
    }
    const CProgramRun away(kPlain, "", "[RUVO_SERIAL]\nRV000=4\n");
    EXPECT_EQ(Visit(away, "(visit $DIR/site.ini --retry 1 --after 0m)" + counts),
              kMissing + kMissing + "1\n" + first + second + "DIR/site.ini\n");
    const CProgramRun closed(kWithLogin, "", "[RUVO_SERIAL]\nRV000=5\n");
    EXPECT_EQ(Visit(closed, "(visit $DIR/site.ini --retry 9 --after 0s)" + counts),
              "Invalid password. " + kSerialDetails + "\n" + kFailed + kSerialDetails + "\n1\n" + first +
                  "DIR/site.ini\n")
        << "each try costs one of its attempts";
    EXPECT_EQ(Visit(away, "visit $DIR/site.ini --retry 1 --after 1h & p=$!\n"
                          "until [ $(wc -l <$DIR/state/*/visits.ndjson) = 3 ]; do sleep 0.02; done\n"
                          "kill -TERM $p; wait $p; echo $?"),
              kMissing + "ruvoctl: ended by SIGTERM; no further attempt for 1 relay without an answer\n3\n");
}

TEST(Visit, IsFollowedByPrograms) {
    if (geteuid() != 0)
        GTEST_SKIP() << "such programs are root's";
    const CProgramRun run(kPlain, "", "[RUVO_SERIAL]\nRV001=5\nRV002=9\n");
    const std::string example = RUVO_TEST_DATA "/../packaging/after-visit.d/";
    run.Folder().Write("10-first",
                       "#!/bin/sh\necho $RUVO_STATUS $RUVO_RUNS $RUVO_REACHED/$RUVO_RELAYS $RUVO_TAKEN\n"
                       "echo $RUVO_INI $RUVO_LOG ${RUVO_EVENT_ROOT##*/}; grep -c Plant\n");
    run.Folder().Write("90-last", "#!/bin/sh\nexit 7\n");
    run.Folder().Write("sendmail", "#!/bin/sh\necho sendmail $*\ncat >$DIR/mail.txt\n");
    const std::string prepared =
        "mkdir $DIR/after; cd $DIR; chmod 755 . 10-first 90-last sendmail; cp 10-first 90-last after\n"
        "cp " +
        example + "mail " + example +
        "webhook after; cp 10-first after/20-open; chmod g+w after/20-open\n"
        "cp 10-first after/30~; echo no program >after/40-text\n"
        "export RUVO_AFTER_VISIT_DIR=$DIR/after PATH=$DIR:" RUVO_BIN_DIR
        ":$PATH RUVO_MAIL_TO=ops@example.org\n"
        "python3 " RUVO_TEST_DATA "/e2e/hook_server.py $DIR/port >$DIR/hook.txt & hook=$!\n"
        "until [ -s $DIR/port ]; do sleep 0.02; done; export RUVO_WEBHOOK_URL=http://127.0.0.1:$(cat port)/hook\n";
    const std::string printed =
        Visit(run, prepared + "(visit $DIR/site.ini); echo $?; wait $hook; cat hook.txt");
    EXPECT_EQ(printed.substr(printed.find("ruvoctl:")),
              "ruvoctl: after the visit: DIR/after/20-open: not started, because users other than root can "
              "write, replace or redirect it\n1 1 1/2 1\nDIR/site.ini DIR/run.log ev\n1\n"
              "ruvoctl: after the visit: DIR/after/90-last: ended with status 7\nsendmail -oi -t\n1\n"
              "/hook application/json \"site\"\n");
    const std::string mail = run.Folder().Read("mail.txt");
    EXPECT_TRUE(
        mail.starts_with("To: ops@example.org\nSubject: ruvo site: problems, 1 of 2 relays reached, 1 "
                         "events\n"))
        << mail;
    EXPECT_NE(mail.find("Plant"), std::string::npos) << "the digest itself";
}

TEST(Visit, TellsOfAnExtractorThatWasKilled) {
    const CProgramRun run(kLink +
                              Relay("serial = 5", "[relay.generate]\ncount = 3\nseed = 1\nendless = true\n"),
                          "", "[RUVO_SERIAL]\nRV001=5\n");
    EXPECT_EQ(Visit(run, "visit $DIR/site.ini & p=$!; events 1\n"
                         "kill -KILL $(sed -n 's/.*\"process\":\\([0-9]*\\).*/\\1/p' $DIR/state/*/*.visit)\n"
                         "wait $p; echo $?"),
              "137\n");
}

} // namespace ruvo::test
