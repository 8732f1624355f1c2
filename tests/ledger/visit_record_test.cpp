// Records of visits: whatever ends a run, its record tells so, once.
#include "support/case_table.h"
#include "support/fake_system.h"
#include "support/scratch_folder.h"

#include "base/digest.h"
#include "ledger/root_folder.h"
#include "ledger/run_watch.h"
#include "ledger/visit_history.h"
#include "ledger/visit_record.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/full_path.h"
#include "platform/process.h"
#include "platform/state_folder.h"

#include <gtest/gtest.h>

#include <array>

namespace ruvo::test {

namespace {

SVisitEntry Entry(const std::string& key, const std::string& address = "5") {
    SVisitEntry entry;
    entry.key = key;
    entry.address = address;
    return entry;
}
SVisitLine Ended(ERunEnd how, const std::string& signal = "") {
    SVisitLine line;
    line.ended = how;
    line.signal = signal;
    line.notVisited = 3;
    line.logLines = 2;
    return line;
}

std::string ReadWhileItGrows(const std::string& path) {
    CFile file;
    EXPECT_TRUE(file.Open(path, {.read = true, .removable = true}).Good());
    std::array<std::uint8_t, 10'000> bytes{};
    std::size_t count = 0;
    EXPECT_TRUE(file.Read(bytes, count).Good());
    return {bytes.begin(), bytes.begin() + static_cast<long>(count)};
}

class VisitRecord : public testing::Test {
protected:
    VisitRecord() {
        SetEnvironmentValue("RUVO_STATE_DIR", folder.Native("state"));
        std::filesystem::create_directories(folder.Native("ev"));
        folder.Write("site.ini", "");
        g_standardError.clear();
        g_utcTime = {2026, 11, 25, 2, 0, 0};
    }

    std::unique_ptr<CVisitRecord> Begun(const std::string& ini = "site.ini", SVisitBounds bounds = {}) {
        auto record = std::make_unique<CVisitRecord>(folder.Path("ev"), folder.Path(ini), bounds);
        record->Begin();
        return record;
    }
    void RunWhole(const SVisitEntry& entry, SVisitBounds bounds = {}) {
        const auto record = Begun("site.ini", bounds);
        record->Add(entry);
        record->End(Ended(ERunEnd::Whole));
    }
    /// "1 whole RV001 RV002|": the runs as readers get them.
    std::string Runs(const std::string& ini = "") {
        std::string runs;
        EXPECT_TRUE(CVisitHistory(folder.Path("ev"))
                        .ForEachOf(ini.empty() ? ini : folder.Path(ini), [&runs](const SVisitLine& line,
                                                                                 ERunState state) {
                            runs += std::to_string(line.number) + " ";
                            runs += state == ERunState::Running ? "running" : RunEndName(line.ended);
                            for (const SVisitEntry& entry : line.entries)
                                runs += " " + entry.key;
                            runs += "|";
                        }));
        return runs;
    }
    std::string Name(const std::string& file) const {
        const std::string records = FolderOfJournals(folder.Path("ev"));
        return "state/" + records.substr(records.rfind('\\') + 1) + "/" + file;
    }

    CScratchFolder folder;
};

} // namespace

TEST(VisitLine, IsReadAndWrittenAsFilesHoldIt) {
    ForEachCase<1>("ledger/visit_lines.txt", [](auto& text) {
        const auto line = ReadVisitLine(text);
        ASSERT_TRUE(line);
        std::vector<std::string> entries;
        for (const SVisitEntry& entry : line->entries)
            entries.push_back(AsJson(entry));
        EXPECT_EQ(LineAsJson(BeginAsJson(*line), {entries.begin(), entries.end()}, EndAsJson(*line)), text);
    });
}

TEST(VisitLine, WhatItDoesNotHaveIsNotKnown) {
    const auto line = ReadVisitLine(R"({"number":5})");
    ASSERT_TRUE(line);
    EXPECT_EQ(LineAsJson(BeginAsJson(*line), {}, ""),
              R"({"number":5,"ini":"","process":0,"attempt":1,"begin":"","ended":"killed","end":null,)"
              R"("log_lines":0,"relays":[]})");
    EXPECT_EQ(std::tuple(line->ended, line->logLines, line->result, line->notVisited),
              std::tuple(ERunEnd::Killed, 0U, 0U, 0U));
    SVisitEntry bare = Entry("RV001", "");
    bare.recoveredIn = SStoredBytes{};
    EXPECT_EQ(AsJson(ReadVisitEntry(R"({"key":"RV001","recovered_in":{}})").value_or(SVisitEntry{})),
              AsJson(bare));
    EXPECT_FALSE(ReadVisitEntry("7") || ReadVisitEntry(R"({"address":"5"})"));
    EXPECT_EQ(LineAsJson("{}", {}, "") + LineAsJson(R"({"number":5,)", {}, ""), "");
    using Number = std::optional<std::uint64_t>;
    EXPECT_EQ(NumberOf(R"({"number":10203,)"), Number(10203));
    EXPECT_EQ(NumberOf(R"({"number":9999999999999999999})"), Number(9'999'999'999'999'999'999U));
    EXPECT_FALSE(NumberOf(R"({"number":12345678901234567890})") || NumberOf(R"({"number":5)"));
}

TEST_F(VisitRecord, TellsOfARunAsLongAsItLastsAndAfterwards) {
    EXPECT_EQ(CVisitHistory(folder.Path("ev")).Found(), EHistory::None);
    EXPECT_TRUE(PrepareRootFolder(FolderOfJournals(folder.Path("ev")), folder.Path("ev")));
    for (const char* root : {"ev", "other"})
        EXPECT_EQ(CVisitHistory(folder.Path(root)).Found(), EHistory::None) << root;
    EXPECT_EQ(Runs(), "");
    auto record = Begun();
    EXPECT_EQ(Runs(), "1 running|");
    record->Add(Entry("RV001"));
    EXPECT_EQ(Runs(), "1 running RV001|");
    const auto other = Begun("other.ini");
    EXPECT_EQ(Runs(), "1 running RV001|2 running|") << "two at once";
    other->AddRecovered("RV001", 1, std::nullopt);
    other->End(Ended(ERunEnd::NotBegun));
    EXPECT_EQ(Runs(), "2 not begun RV001|1 running RV001|");
    const SVisitSummary others = SummariseVisits(folder.Path("ev"), folder.Path("other.ini"));
    EXPECT_TRUE(others.hasEvents && others.relays.empty()) << "no visit of that relay";
    for (const ERunEnd how : {ERunEnd::Signal, ERunEnd::Whole}) // the first one counts
        record->End(Ended(how, "SIGTERM"));
    EXPECT_EQ(Runs(), "2 not begun RV001|1 signal RV001|");
    EXPECT_EQ(Runs("site.ini"), "1 signal RV001|");
    EXPECT_FALSE(folder.Has(Name("1.visit")) || folder.Has(Name("2.visit")));
    const SVisitSummary summary = SummariseVisits(folder.Path("ev"), folder.Path("site.ini"));
    ASSERT_TRUE(summary.last);
    EXPECT_EQ(summary.last->signal + " " + summary.last->begin + " " + summary.last->end,
              "SIGTERM 2026-11-25T02:00:00Z 2026-11-25T02:00:00Z");
    EXPECT_EQ(summary.last->notVisited, 3U);
    EXPECT_EQ(summary.last->iniPath, DisplayPath(folder.Path("site.ini")));
    EXPECT_EQ(g_standardError, "");
}

TEST_F(VisitRecord, ARelayIsMissedUntilItIsReachedAndARepeatedAttemptCounts) {
    SVisitEntry feeder = Entry("RV001");
    const auto night = [&](int day, bool isReached, const char* attempt) {
        g_utcTime.day = day;
        g_utcTime.minute = *attempt - '1';
        SetEnvironmentValue("RUVO_ATTEMPT", attempt);
        feeder.isReached = isReached;
        feeder.end = RecordedNow();
        const auto record = Begun();
        record->Add(feeder);
        if (attempt == std::string("1"))
            record->Add(Entry("RV002"));
        record->End(Ended(ERunEnd::Whole));
        return SummariseVisits(folder.Path("ev"), folder.Path("site.ini"));
    };
    night(20, true, "1");
    night(21, false, "1");
    SVisitSummary summary = night(23, false, "1");
    SKnownRelay& known = summary.relays[{"RV001", "5"}];
    EXPECT_EQ(known.missedSince + " " + known.lastReached, "2026-11-21T02:00:00Z 2026-11-20T02:00:00Z");
    EXPECT_EQ(known.nights, 2U);
    EXPECT_EQ((night(23, false, "2").relays[{"RV001", "5"}].nights), 2U) << "of the same night";
    summary = night(23, true, "3");
    const SKnownRelay& reached = summary.relays[{"RV001", "5"}];
    EXPECT_EQ(reached.missedSince + reached.missedLast, "");
    EXPECT_EQ(reached.nights, 0U);
    EXPECT_EQ(summary.last->begin, "2026-11-23T02:00:00Z") << "the first attempt's";
    EXPECT_EQ(summary.last->logLines, 6U) << "of all three";
    ASSERT_EQ(summary.last->entries.size(), 2U) << "the other relay was visited by the first attempt";
    EXPECT_TRUE(summary.last->entries[0].isReached);
    EXPECT_EQ(night(24, true, "2").last->entries.size(), 1U) << "what it repeats is not known";
}

TEST_F(VisitRecord, AnAttemptThatIsNoNumberIsTheFirst) {
    for (const auto& [text, want] : {std::pair("2", 2U),
                                     {"", 1U},
                                     {"0", 1U},
                                     {"-1", 1U},
                                     {"x", 1U},
                                     {"2x", 1U},
                                     {"99999999999999999999999", 1U}}) {
        SetEnvironmentValue("RUVO_ATTEMPT", text);
        RunWhole(Entry("RV001"));
        EXPECT_EQ(SummariseVisits(folder.Path("ev"), folder.Path("site.ini")).last->attempt, want) << text;
    }
}

TEST_F(VisitRecord, EndedAnywhereItIsReadAndBecomesOneLine) {
    auto record = Begun();
    record->Add(Entry("RV001"));
    record->Add(Entry("RV002"));
    const std::string run = ReadWhileItGrows(folder.Path(Name("1.visit")));
    record->End(Ended(ERunEnd::Whole));
    const std::string line = folder.Read(Name("visits.ndjson"));
    const std::string end = EndAsJson(Ended(ERunEnd::Whole)) + "\n";
    const auto check = [&](const std::string& left, const std::string& lines, const std::string& want) {
        folder.Write(Name("1.visit"), left);
        folder.Write(Name("visits.ndjson"), lines);
        EXPECT_EQ(Runs(), want) << left << lines;
        Begun()->End(Ended(ERunEnd::Whole));
        EXPECT_FALSE(folder.Has(Name("1.visit"))) << left;
        EXPECT_EQ(Runs(), want + (want.empty() ? "1" : "2") + " whole|") << left << lines;
    };
    const auto headSize = run.find('\n') + 1;
    for (std::size_t cut = (run + end).size() % 41; cut <= (run + end).size(); cut += 41) {
        const auto entries =
            std::count(run.begin(), run.begin() + static_cast<long>(std::min(cut, run.size())), '\n');
        const std::string ended = cut == (run + end).size() ? "1 whole" : "1 killed";
        check((run + end).substr(0, cut), "",
              cut < headSize ? ""
                             : ended + (entries > 1 ? " RV001" : "") + (entries > 2 ? " RV002" : "") + "|");
    }
    for (std::size_t cut = 0; cut <= line.size(); cut += 61)
        check(run + end, line.substr(0, cut), "1 whole RV001 RV002|");
    check(run + end, line, "1 whole RV001 RV002|");
    EXPECT_EQ(std::ranges::count(folder.Read(Name("visits.ndjson")), '\n'), 2) << "no line twice";
    check(run + end, line + line, "1 whole RV001 RV002|");
}

TEST_F(VisitRecord, KeepsAsManyRunsAsItMay) {
    const SVisitBounds bounds[] = {{.runs = 3}, {.bytes = 1500}};
    for (const SVisitBounds& bound : bounds) {
        std::filesystem::remove_all(folder.Native("state"));
        for (int run = 1; run <= 8; ++run)
            RunWhole(Entry("RV00" + std::to_string(run)), bound);
        EXPECT_EQ(Runs(), "4 whole RV004|5 whole RV005|6 whole RV006|7 whole RV007|8 whole RV008|");
    }
    EXPECT_TRUE(folder.Has(Name("visits-earlier.ndjson"))) << "where other versions look for them";
    std::filesystem::remove_all(folder.Native("state"));
    for (int run = 1; run <= 3; ++run)
        RunWhole(Entry("RV00" + std::to_string(run)), {.runs = 1});
    EXPECT_EQ(Runs(), "2 whole RV002|3 whole RV003|");
}

/// A file of so many runs is longer than what is read of it at once.
TEST_F(VisitRecord, KeepsTwoYearsOfNights) {
    RunWhole(Entry("RV001"));
    std::string lines, runs;
    for (SVisitLine line; ++line.number <= 731;) {
        lines += LineAsJson(BeginAsJson(line), {}, "") + "\n";
        runs += std::to_string(line.number) + " killed|";
    }
    folder.Write(Name("visits.ndjson"), lines);
    for (const bool isFull : {false, true}) {
        RunWhole(Entry("RV001"));
        EXPECT_EQ(folder.Has(Name("visits-earlier.ndjson")), isFull);
    }
    EXPECT_EQ(Runs(), runs + "732 whole RV001|733 whole RV001|");
    EXPECT_EQ(SVisitBounds{}.bytes, 33'554'432U) << "as people are told";
}

TEST_F(VisitRecord, WhatIsWrongWithTheFilesIsSeen) {
    RunWhole(Entry("RV001"));
    const auto running = Begun();
    std::filesystem::remove(folder.Native(Name("visits.ndjson")));
    const auto next = Begun();
    EXPECT_EQ(Runs(), "2 running|3 running|") << "a number is not used again";
    for (const char* name : {"visits-earlier.ndjson", "visits.ndjson"}) {
        RunWhole(Entry("RV001"));
        std::filesystem::remove(folder.Native(Name(name)));
        std::filesystem::create_directory(folder.Native(Name(name)));
        EXPECT_FALSE(SummariseVisits(folder.Path("ev"), folder.Path("site.ini")).isWhole) << name;
        std::filesystem::remove(folder.Native(Name(name)));
    }
}

TEST_F(VisitRecord, AWatchSeesTheRunsThatBeginAfterIt) {
    RunWhole(Entry("RV001"));
    EXPECT_FALSE(CRunWatch(folder.Path("ev")).Find(ProcessNumber()));
    const auto earlier = Begun();
    const CRunWatch watch(folder.Path("ev"));
    const auto seen = [&watch](std::uint64_t process) {
        const auto run = watch.Find(process);
        return std::to_string(run ? run->line.number : 0) +
               (run && run->state == ERunState::Ended ? " ended" : "");
    };
    EXPECT_EQ(seen(ProcessNumber()), "0");
    const auto record = Begun("other.ini");
    EXPECT_EQ(seen(ProcessNumber()), "3");
    record->End(Ended(ERunEnd::Whole));
    EXPECT_EQ(seen(ProcessNumber()), "3 ended");
    EXPECT_EQ(seen(0), "0");
    folder.Write(Name("4.visit"), "{\"number\":4,\"process\":0}\n"); // of a run that was killed
    EXPECT_EQ(seen(0), "4 ended");
    CVisitRecord recovery(folder.Path("ev"), folder.Path("third.ini"), {}, ERunKind::Recover);
    recovery.Begin();
    for (const char* ini : {"site.ini", "third.ini"})
        EXPECT_EQ(FindRunningVisit(folder.Path("ev"), folder.Path(ini)).value_or(SVisitLine{}).number,
                  ini == std::string("site.ini") ? 2U : 0U);
}

TEST_F(VisitRecord, KnowsWhenARelayWasLastReached) {
    SVisitEntry entry = Entry("RV001");
    entry.name = "AB12-1";
    entry.end = "2026-11-24T02:00:09Z";
    entry.isReached = true;
    RunWhole(entry);
    entry.address = "6";
    const auto other = Begun("other.ini");
    other->Add(entry);
    other->End(Ended(ERunEnd::Whole));
    entry = Entry("RV001");
    for (const char* address : {"5", "5", "6"}) {
        entry.address = address;
        RunWhole(entry);
    }
    const SVisitSummary summary = SummariseVisits(folder.Path("ev"), folder.Path("site.ini"));
    const SKnownRelay known = summary.relays.at({"RV001", "5"});
    EXPECT_EQ(known.name + " " + known.lastReached, "AB12-1 2026-11-24T02:00:09Z");
    EXPECT_EQ(summary.relays.at({"RV001", "6"}).lastReached, "") << "another relay";
    EXPECT_EQ(summary.last->entries.at(0).lastReached, "");
}

TEST_F(VisitRecord, HostileTextsStayText) {
    SVisitEntry entry = Entry("RV\"1\\");
    entry.name = "a\x01\n{\"number\":9}";
    entry.plant = "\xC2\x9B\xE2\x82\xAC";
    entry.taken = entry.to = ~std::uint64_t{0};
    entry.status = 0xFFFFFFFF;
    RunWhole(entry);
    const auto last = SummariseVisits(folder.Path("ev"), folder.Path("site.ini")).last;
    ASSERT_TRUE(last && last->entries.size() == 1);
    const SVisitEntry& read = last->entries.front();
    EXPECT_EQ(std::tie(read.key, read.name, read.plant, read.taken, read.to, read.status),
              std::tie(entry.key, entry.name, entry.plant, entry.taken, entry.to, entry.status));
    const std::string file = folder.Read(Name("visits.ndjson"));
    EXPECT_EQ(std::count(file.begin(), file.end(), '\n'), 1);
}

TEST_F(VisitRecord, WhatCannotBeWrittenIsToldOnce) {
    folder.Write("state", "no folder");
    RunWhole(Entry("RV001"));
    EXPECT_EQ(g_standardError, "ruvo: no record of this visit can be kept in " +
                                   DisplayPath(FolderOfJournals(folder.Path("ev"))) +
                                   "; ruvoctl status will not know of it");
}

/// The first visit of a site may find nothing to store, and leave no event root.
TEST_F(VisitRecord, OfASiteWithoutEventsHasItsPlace) {
    std::filesystem::remove_all(folder.Native("ev"));
    RunWhole(Entry("RV001"));
    std::filesystem::create_directory(folder.Native("ev"));
    EXPECT_TRUE(SummariseVisits(folder.Path("ev"), folder.Path("site.ini")).last);
}

// One that is reachable resolves to that form. Later versions look for the journals in that folder, too.
TEST_F(VisitRecord, AShareThatIsAwayKeepsItsFolder) {
    for (const auto& [below, readable] : {std::pair<std::string, std::string>("", "share"),
                                          {"\\ev", "ev"},
                                          {"\\ev\\North Bay_7", "North-Bay-7"},
                                          {"\\" + std::string(50, 'a'), std::string(40, 'a')}}) {
        const std::string share = "\\\\srv-that-is-away\\share" + below;
        const std::string name = FolderOfRoot("C:\\state", share);
        EXPECT_EQ(name, "C:\\state\\" + readable + "-" + DigestOf("\\\\?\\UNC" + share.substr(1)));
        EXPECT_EQ(FolderOfRoot("C:\\state", "\\\\SRV-that-is-away\\Share" + below), name);
    }
    const std::string drive = ResolvedFolder("C:\\");
    EXPECT_EQ(FolderOfRoot("C:\\state", "C:\\"), "C:\\state\\-" + DigestOf(drive));
    EXPECT_EQ(FolderOfRoot("C:\\state", "C:\\no\\ev"), "C:\\state\\ev-" + DigestOf(drive + "no\\ev"));
    EXPECT_EQ(FolderOfRoot("", "C:\\") + FolderOfRoot("C:\\state", ""), "");
}

TEST_F(VisitRecord, TheFolderOfAnEventRootIsFoundByWhatPeopleCallIt) {
    const std::string own = FolderOfJournals(folder.Path("ev"));
    for (const char* root : {"another", "ev"})
        EXPECT_TRUE(PrepareRootFolder(FolderOfJournals(folder.Path(root)), folder.Path(root)));
    for (const std::string& meant : {own.substr(own.rfind('\\') + 1), own, folder.Path("ev")})
        EXPECT_EQ(FindRootFolder(StateFolder(), meant).value(), own);
    const std::string noted = EventRootOf(own).value();
    folder.Write(Name("event-root.txt"), noted + std::string(300, 'x') + "\n");
    EXPECT_TRUE(PrepareRootFolder(own, folder.Path("ev")));
    EXPECT_EQ(EventRootOf(own), noted);
    EXPECT_TRUE(PrepareRootFolder(own, "\\\\SRV-that-is-away\\Share\\ev"));
    EXPECT_EQ(EventRootOf(own), "\\\\srv-that-is-away\\share\\ev");
    EXPECT_FALSE(PrepareRootFolder(folder.Path("site.ini\\ev"), folder.Path("ev")));
    const std::string many = folder.Path("many\\");
    for (const char* name : {"ev-0123456789ABCDEF", "-0000000000000000", "ev-G123456789ABCDEF",
                             "ev-0123456789ABCDE", "ev-00123456789ABCDEF", "0123456789ABCDEF"})
        std::filesystem::create_directories(folder.Native(std::string("many/") + name));
    folder.Write("many/f-0123456789ABCDEF", "");
    EXPECT_EQ(RootFoldersIn(folder.Path("many")).value(),
              (std::vector{many + "-0000000000000000", many + "ev-0123456789ABCDEF"}));
}

} // namespace ruvo::test
