// What one run of the extractor means for the exit status of its visit, and what a visit says to whom.
#include "support/case_table.h"
#include "support/scratch_folder.h"
#include "tools/sites/muted_lines.h"
#include "tools/visit/log_growth.h"
#include "tools/visit/relay_progress.h"
#include "tools/visit/run_outcome.h"
#include "tools/visit/visit_output.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace ruvo::test {
namespace {

std::optional<SSeenRun> RecordOf(const std::string& text) {
    for (const ERunEnd end : {ERunEnd::Whole, ERunEnd::Signal, ERunEnd::Killed, ERunEnd::NotBegun}) {
        if (text.starts_with(RunEndName(end))) {
            SSeenRun run;
            run.line.ended = end;
            run.line.logLines = std::stoul(text.substr(text.rfind(' ')));
            return run;
        }
    }
    EXPECT_EQ(text, "none");
    return std::nullopt;
}

SVisitEntry Entry(const std::string& key, const std::string& address, std::uint64_t logLines = 0,
                  bool isReached = false) {
    SVisitEntry entry;
    entry.key = key;
    entry.address = address;
    entry.logLines = logLines;
    entry.isReached = isReached;
    return entry;
}

} // namespace

TEST(VisitOutcome, IsTheRecordsBeforeTheLogs) {
    ForEachCase<6>("tools/visit_outcomes.txt",
                   [](auto& exit, auto& record, auto& printed, auto& logged, auto& other, auto& status) {
                       SRunOutcome outcome;
                       outcome.end.status = static_cast<std::uint32_t>(std::stoul(exit));
                       outcome.record = RecordOf(record);
                       outcome.hasPrinted = !printed.empty();
                       outcome.logged = logged;
                       outcome.otherVisit = other.empty() ? std::nullopt : std::optional(SVisitLine());
                       EXPECT_EQ(std::to_string(StatusOfRun(outcome)), status);
                   });
    EXPECT_EQ(WorseStatus(139, 3) + WorseStatus(2, 139) + WorseStatus(1, 2), 139 + 139 + 2);
}

TEST(VisitOutcome, OfAttemptsCountsWhatALaterOneReaches) {
    const auto attempt = [](std::uint64_t logLines, std::vector<SVisitEntry> entries) {
        SRunOutcome outcome;
        outcome.record = SSeenRun();
        outcome.record->line.ended = ERunEnd::Whole;
        outcome.record->line.logLines = logLines;
        outcome.record->line.entries = std::move(entries);
        return outcome;
    };
    const auto relay = [](const char* key, std::uint64_t logLines, bool isReached) {
        return Entry(key, key, logLines, isReached);
    };
    const SRunOutcome first = attempt(3, {relay("A", 2, false), relay("B", 1, false), relay("C", 0, true)});
    EXPECT_EQ(RelaysWithoutAnswer(first), (std::vector<std::string>{"A", "B"}));
    const SRunOutcome second = attempt(1, {relay("A", 0, true), relay("B", 1, false)});
    const SRunOutcome third = attempt(0, {relay("B", 0, true)});
    EXPECT_EQ(StatusOfAttempts({first}), 1);
    EXPECT_EQ(StatusOfAttempts({first, second}), 1);
    EXPECT_EQ(StatusOfAttempts({first, second, third}), 0);
    SRunOutcome other = first;
    other.record->line.logLines = 4; // one that is of no relay
    EXPECT_EQ(StatusOfAttempts({other, second, third}), 1);
    SRunOutcome ended = first;
    ended.record->line.ended = ERunEnd::Signal;
    EXPECT_TRUE(RelaysWithoutAnswer(ended).empty());
    EXPECT_EQ(StatusOfAttempts({first, second, ended}), 3);
}

TEST(MutedLines, MakeNoProblemOfAVisit) {
    SSiteVisits visits;
    for (const char* key : {"RV001", "RV002"}) {
        visits.relays.emplace_back();
        visits.relays.back().key = key;
        visits.relays.back().link = "ethernet";
        visits.relays.back().address = key == std::string("RV001") ? "10.0.0.5,1" : "10.0.0.6,2";
    }
    visits.relays[1].mute.emplace();
    ForEachCase<4>("tools/muted_logs.txt", [&](auto& logged, auto& first, auto& second, auto& status) {
        SRunOutcome outcome;
        outcome.record = RecordOf("whole " + std::to_string(std::stoul(first) + std::stoul(second)));
        for (const SRelayVisit& relay : visits.relays) {
            const std::size_t lines = std::stoul(relay.key == "RV001" ? first : second);
            outcome.record->line.entries.push_back(Entry(relay.key, "", lines));
        }
        outcome.mutedLines = CountMutedLines(visits, logged);
        EXPECT_EQ(std::to_string(StatusOfAttempts({outcome})), status);
        outcome.record->line.ended = ERunEnd::Signal;
        EXPECT_EQ(StatusOfAttempts({outcome}), 3) << "the run itself is not muted";
    });
}

TEST(RelayOfConnection, DependsOnTheLink) {
    const std::tuple<const char*, const char*, const char*, bool> cases[] = {
        {"its port", "serial", "COM Port: COM2, device address: 3.", true},
        {"another port", "serial", "COM Port: COM1, device address: 3.", false},
        {"another number", "serial", "COM Port: COM2, device address: 13.", false},
        {"a modem", "serial", "modem name: COM2, device address: 3.", false},
        {"its modem", "modem", "modem name: COM2, number to dial: 1, device address: 3.", true},
        {"a port", "modem", "COM Port: COM2, device address: 3.", false}};
    for (const auto& [name, link, connection, isFound] : cases) {
        SSiteVisits visits;
        visits.linkName = "COM2";
        visits.relays.emplace_back().address = "3";
        visits.relays.back().link = link;
        EXPECT_EQ(RelayOfConnection(visits, connection) != nullptr, isFound) << name;
    }
}

TEST(RelayVisit, HasFilesWhoseNamesLackItsBlanks) {
    SRelayVisit relay;
    EXPECT_FALSE(relay.HasFilesOf("")) << "one without a name";
    relay.name = "PS01- 17 42";
    EXPECT_TRUE(relay.HasFilesOf("PS01-17 42"));
    EXPECT_FALSE(relay.HasFilesOf("PS01-17 43"));
}

TEST(LogGrowth, IsWhatOthersAdd) {
    const CScratchFolder folder;
    const CLogGrowth missing(folder.Path("log"));
    EXPECT_EQ(missing.Added(), "");
    folder.Write("log", "first\n");
    const CLogGrowth growth(folder.Path("log"));
    EXPECT_EQ(missing.Added() + growth.Added(), "first\n");
    std::ofstream(folder.Native("log"), std::ios::app) << "second\n";
    EXPECT_EQ(growth.Added(), "second\n");
    folder.Write("log", "new\n");
    EXPECT_EQ(growth.Added(), "new\n") << "replaced";
    EXPECT_EQ(CLogGrowth("").Added(), "");
}

TEST(VisitOutput, FitsWhoReadsIt) {
    std::istringstream in;
    std::ostringstream outText, errorText;
    CTextOutput out(outText), error(errorText);
    SConsole console{.in = in, .out = out, .error = error, .width = 12};
    CVisitOutput(console, true, true).Say(EPriority::Warning, "a\x1B[2J\tb\r\n\nc");
    EXPECT_EQ(outText.str(), "<4>a[2J b\n<4>\n<4>c\n");
    {
        CVisitOutput scheduler(console, false, false);
        scheduler.ShowProgress("1 of 2");
        scheduler.Complain("bad");
    }
    EXPECT_EQ(errorText.str(), "ruvoctl: bad\n");
    errorText.str("");
    console.errorIsTerminal = true;
    {
        CVisitOutput person(console, false, false);
        person.ShowProgress("relay 1 of 2, more than fits");
        person.Say(EPriority::Notice, "line");
        person.ShowProgress("relay 2");
    }
    EXPECT_EQ(errorText.str(), "\r\x1B[Krelay 1 of \r\x1B[K\r\x1B[Krelay 2\r\x1B[K");
}

TEST(RelayProgress, SaysWhatIsUnderWayAndWhatCameOfIt) {
    const SSitePlaces places{.events = "", .log = "", .relays = {{"RV001", "5"}, {"RV002", "6"}}};
    const CRelayNames names;
    SVisitLine line;
    line.entries = {Entry("RV009", "")}; // only tells of recovered events
    EXPECT_EQ(ProgressText(line, places, names, 41), "relay 1 of 2, RV001 (5), 0 events, 00:41");
    line.entries.push_back(Entry("RV001", "5", 0, true));
    line.entries.back().taken = 4;
    EXPECT_EQ(ProgressText(line, places, names, 3725), "relay 2 of 2, RV002 (6), 4 events, 62:05");
    line.entries.push_back(Entry("RV002", "6"));
    EXPECT_EQ(ProgressText(line, places, names, 1), "2 relays visited, 4 events, 00:01");
    EXPECT_EQ(TotalText(line, 2, 9), "1 of 2 relays reached, 4 events, 00:09");

    SVisitEntry& relay = line.entries[1];
    const auto text = [&names](const SVisitEntry& of) {
        const auto [priority, words] = RelayText(of, names);
        return std::string{static_cast<char>(priority)} + words;
    };
    EXPECT_EQ(text(relay), "6RV001 (5): 4 events");
    relay.name = "AB12-0001";
    relay.waiting = 2;
    EXPECT_EQ(text(relay), "4AB12-0001 (RV001): 4 events, 2 in the journal for the next run");
    relay.plant = "Feeder 7";
    relay.lost = 1;
    relay.status = 8;
    relay.statusText = "no answer";
    EXPECT_EQ(text(relay),
              "3Feeder 7 (RV001): 4 events, 1 lost, 2 in the journal for the next run; no answer");
    EXPECT_EQ(text(line.entries[2]), "4RV002 (6): not reached");
}

} // namespace ruvo::test
