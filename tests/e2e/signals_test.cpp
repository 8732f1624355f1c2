// The extractor and its runner, asked to end by signals: what the log says, and where every event is.
#include "e2e/cases.h"
#include "e2e/program.h"

#include "dayfile/day_file_reader.h"

#include <gtest/gtest.h>

#include <regex>

namespace ruvo::test {

const std::string kRelays = "[RUVO_SERIAL]\nRV001=5\nRV002=6\n";
const std::string kEndless = "[relay.generate]\ncount = 3\nseed = 1\nendless = true\n";
const std::string kWithColumn =
    "[[relay.event]]\nkind = 3\nlocation = \"01.12\"\ntime = 2026-02-16T13:07:09.029\ntext = \"Trip\"\n"
    "value = { uint = 7, size = 1 }\nrecord = { column = \"30\", number = 1 }\n"
    "[[relay.record]]\ncolumn = \"30\"\nnumber = 1\n[relay.record.cells]\n\"30.02\" = { uint = 1, size = 1 }\n";

/// Waits for so many events in the trace. TERM goes to $p until it ends, each time as a new request.
const std::string kTools =
    "events() { until [ \"$(grep -c ^GetEvent $DIR/trace.txt 2>/dev/null)\" -ge $1 ] 2>/dev/null\n"
    "do sleep 0.02; done; }\n"
    "end() { while kill -TERM $p 2>/dev/null; do sleep 1.2; done; wait $p; echo exit $?; }\n";

static std::size_t CountRecords(const CProgramRun& run) {
    std::size_t records = 0;
    for (const auto& [name, bytes] : FilesBelow(run.Folder().Native("ev"), true)) {
        CDayFileReader reader;
        EXPECT_TRUE(reader.Open(run.Folder().Native("ev/" + name)).Good());
        for (SDayFileItem item; reader.Next(item);)
            records += item.record != nullptr ? 1 : 0;
    }
    return records;
}

/// The log of a visit that was ended by that signal with as many events as there are records.
static std::string LogOfLimit(const std::string& signal, std::size_t records) {
    return "This visit has taken " + std::to_string(records) + " event" + (records == 1 ? "" : "s") +
           "; the rest waits in the relay for the next run. " + kSerialDetails + "\nRun ended by " + signal +
           "; 1 relay not visited.\n";
}

TEST(Signals, EndAVisitAsALimitDoes) {
    for (const std::string signal : {"TERM", "HUP", "INT"}) {
        SCOPED_TRACE(signal);
        const CProgramRun run(kLink + Relay("serial = 5", kEndless), "", kRelays);
        EXPECT_EQ(run.Shell(kTools + "env --default-signal=INT $RUVO $DIR/site.ini & p=$!; events 1; kill -" +
                            signal + " $p; wait $p; echo exit $?"),
                  "exit 0\n");
        EXPECT_EQ(run.Log(), LogOfLimit("SIG" + signal, CountRecords(run)));
    }
}

TEST(Signals, ThoseIgnoredAtTheStartStayIgnored) {
    const CProgramRun run(kLink + Relay("serial = 5", kEndless), "", kRelays);
    EXPECT_EQ(run.Shell(kTools + "trap '' HUP; $RUVO $DIR/site.ini & p=$!\n" // the shell lets it ignore INT
                                 "events 1; kill -HUP $p; kill -INT $p; end"),
              "exit 0\n");
    EXPECT_EQ(run.Log(), LogOfLimit("SIGTERM", CountRecords(run)));
}

TEST(Signals, ASecondOneEndsWhatDoesNotComeBack) {
    const std::string lost = "1 event taken from the relay, but not stored. " + kSerialDetails + "\n";
    const struct {
        const char* name;
        const char* fault;
        std::string log;
        std::string record;
    } cases[] = {
        {"a command that is awaited", "operation = \"StartGetColumnTextAndValues\"\nhang = true\n",
         "Extracting event records  P32LS Error - Function Aborted by User. " + kSerialDetails +
             "\n1 event waits in the journal for the next run. " + kSerialDetails + "\n" + lost +
             "Run ended by SIGTERM; 1 relay not visited.\n",
         "1,\"log_lines\":4"},
        {"a call", "operation = \"ChangeSetting\"\ncell = \"30.01\"\ndelay = 600000\n",
         "Run ended by SIGTERM; 2 relays not visited.\n", "2,\"log_lines\":1"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const CProgramRun run(kLink + Relay("serial = 5", kTrip + kWithColumn) + "[[fault]]\n" + row.fault,
                              "", kRelays);
        EXPECT_EQ(run.Shell(kTools + "$RUVO $DIR/site.ini & p=$!; events 2; end"), "exit 0\n");
        EXPECT_EQ(run.Log(), row.log);
        EXPECT_EQ(run.Shell("sed 's/.*\"ended\"/\"ended\"/; s/\"end\":[^,]*,//; s/,\"relays.*//' "
                            "$DIR/state/*/visits.ndjson"),
                  "\"ended\":\"signal\",\"signal\":\"SIGTERM\",\"not_visited\":" + row.record + "\n");
        EXPECT_EQ(CountRecords(run), 0U);
        EXPECT_EQ(run.Shell("sed -i '/fault/,$d' $DIR/substation.toml; rm $DIR/run.log; $RUVO $DIR/site.ini"),
                  "");
        EXPECT_TRUE(run.Log().starts_with("1 event of a visit that was ended is in day file ")) << run.Log();
        EXPECT_EQ(CountRecords(run), 3U) << "what was taken, and what this relay gives again";
    }
}

TEST(Signals, TheRunnerPassesThemOnAndTellsOfTheEnd) {
    const std::string install =
        "mkdir -p $DIR/bin; cp " RUVO_TEST_DATA "/../packaging/linux/run-site $DIR/bin; ln -sf " RUVO_BIN_DIR
        "/* $DIR/bin\nsite() { exec env --default-signal=INT $DIR/bin/run-site \"$@\"; }\n";
    const struct {
        const char* name;
        const char* start; ///< what is asked to end is $p then
        const char* signal;
        const char* word;
    } cases[] = {
        {"by a manager", "site $DIR/site.ini & p=$!", "-TERM $p", "SIGTERM"},
        {"by a terminal that is closed", "site $DIR/site.ini & p=$!", "-HUP $p", "SIGHUP"},
        {"by a key", "set -m; site $DIR/site.ini & p=$!; set +m", "-INT -- -$p", "SIGINT"},
    };
    const CProgramRun run(kLink + Relay("serial = 5", kEndless), "", kRelays);
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        run.Shell("rm -rf $DIR/ev $DIR/run.log $DIR/trace.txt");
        const std::string printed = run.Shell(install + kTools + row.start + "; events 1; kill " +
                                              row.signal + "; wait $p; echo exit $?");
        const std::string log = LogOfLimit(row.word, CountRecords(run));
        EXPECT_EQ(run.Log(), log);
        EXPECT_EQ(std::regex_replace(printed, std::regex(R"(\d+/\d+/\d+ \d+:\d+:\d+ |\r)"), ""),
                  log + "exit 3\n");
    }
    run.Shell("sed -i 's/endless = true//' $DIR/substation.toml; sed -i /RV002/d $DIR/site.ini");
    EXPECT_EQ(run.Shell(install + "(site $DIR/site.ini); echo exit $?"), "exit 0\n");
    EXPECT_EQ(run.Shell(install + "(site $DIR/site.ini) <&- >&- 2>&-; echo exit $?"), "exit 0\n");
}

} // namespace ruvo::test
