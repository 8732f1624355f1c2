// The record of a run where the disk or the memory fails, or the machine ends: the run is recorded, or people
// are told that it is not.
#include "memory_disk.h"
#include "support/failing_memory.h"
#include "support/fake_system.h"

#include "ledger/root_folder.h"
#include "ledger/visit_history.h"
#include "ledger/visit_record.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace ruvo::test {

namespace {

constexpr const char* kRoot = "C:\\site";
bool g_isBegun = false; ///< the last run has told nothing as it began

/// What goes wrong in a run: the nth operation and a later one fail, or all from it on, or the nth
/// allocation, or another run removes what is empty before the operation.
enum class EBreak : std::uint8_t { Nothing, Two, AllFromIt, Memory, OtherRun };

/// False when the run was over before that. A file of visits takes three runs.
bool Visit(const std::vector<std::string>& relays, EBreak what = EBreak::Nothing, std::size_t nth = 0,
           std::size_t later = 0, bool isKilled = false) {
    CVisitRecord record(kRoot, "C:\\site.ini", {.runs = 3});
    std::vector<SVisitEntry> entries(relays.size());
    SVisitLine end;
    end.ended = ERunEnd::Whole;
    g_disk.operations = 0;
    if (what == EBreak::AllFromIt)
        g_disk.faults = {{nth, nth + 1'000'000, EFileFailure::Other, true}};
    if (what == EBreak::Two)
        g_disk.faults = {{nth, nth, EFileFailure::Other, true}, {later, later, EFileFailure::Other, true}};
    g_disk.otherRunAt = what == EBreak::OtherRun ? nth : 0;
    for (std::size_t i = 0; i < relays.size(); ++i)
        entries[i].key = relays[i];
    const CFailingMemory memory(what == EBreak::Memory ? nth : 0);
    record.Begin();
    g_isBegun = g_standardError.empty();
    for (SVisitEntry& entry : entries)
        record.Add(std::move(entry));
    if (!isKilled)
        record.End(std::move(end));
    const bool isOver = nth > (what == EBreak::Memory ? CFailingMemory::Count() : g_disk.operations);
    g_disk.faults.clear();
    g_disk.otherRunAt = 0;
    return !isOver;
}
void Start(std::size_t earlierRuns) {
    g_disk = {};
    g_disk.PutFolder(kRoot);
    g_disk.PutFolder(FolderOfJournals(kRoot));
    for (; earlierRuns > 0; --earlierRuns)
        Visit({"RV001"});
    g_disk.FlushAll();
    g_standardError.clear();
}
std::string Runs() {
    std::string runs;
    EXPECT_TRUE(CVisitHistory(kRoot).ForEach([&runs](const SVisitLine& line, ERunState) {
        runs += RunEndName(line.ended);
        for (const SVisitEntry& entry : line.entries)
            runs += " " + entry.key;
        runs += "|";
    }));
    return runs;
}
std::size_t OwnFiles() {
    return RunFilesIn(FolderOfJournals(kRoot)).value().size();
}
bool Try(EBreak what, std::size_t nth, std::size_t later = 0) {
    SCOPED_TRACE(std::to_string(nth) + " and " + std::to_string(later) + " of kind " +
                 std::to_string(int(what)));
    Start(3);
    const bool isReached = Visit({"RV002", "RV003"}, what, nth, later);
    const bool isBegun = g_isBegun;
    const std::string told = g_standardError;
    EXPECT_EQ(told.rfind("ruvo: "), told.empty() ? std::string::npos : 0) << "told once";
    EXPECT_LE(OwnFiles(), later > nth ? 2U : 1U) << "what was made for a number that is taken goes";
    const bool isInFile = std::ranges::any_of(g_disk.Files(), [](const auto& file) {
        return file.first.ends_with(".ndjson") && file.second.find("RV003") != std::string::npos;
    });
    EXPECT_TRUE(told.empty() ? isInFile : what != EBreak::OtherRun);
    Visit({"RV004"});
    const auto isLeft = [runs = Runs()](const std::string& run) {
        return runs == "whole RV001|whole RV001|whole RV001|" + run + "whole RV004|";
    };
    EXPECT_TRUE(
        isLeft("whole RV002 RV003|") || (!isBegun && isLeft("")) ||
        (!told.empty() && (isLeft("killed|") || isLeft("killed RV002|") || isLeft("killed RV002 RV003|"))))
        << Runs();
    EXPECT_EQ(OwnFiles(), 0U);
    return isReached && !testing::Test::HasFailure();
}

} // namespace

TEST(VisitRecordFaults, ARunIsRecordedOrPeopleAreTold) {
    for (const EBreak what : {EBreak::AllFromIt, EBreak::Memory, EBreak::OtherRun})
        // The first operation looks for the event root, without which there is no record.
        for (std::size_t nth = what == EBreak::AllFromIt ? 2 : 1; Try(what, nth);)
            ++nth;
    EXPECT_TRUE(Try(EBreak::Two, 1, 1));
    constexpr std::size_t kFurther = 25;
    for (std::size_t nth = 2, gap = kFurther; gap == kFurther; ++nth)
        for (gap = 0; gap < kFurther && Try(EBreak::Two, nth, nth + gap);)
            ++gap;
}

TEST(VisitRecordFaults, WhatIsRecordedSurvivesTheMachine) {
    for (const std::size_t earlier : {0U, 1U, 3U}) // no file of visits, one that goes on, one that is full
        for (const bool isKilled : {false, true}) {
            Start(earlier);
            Visit({"RV002", "RV003"}, EBreak::Nothing, 0, 0, isKilled);
            // Nobody waits for the bytes of a run that lasts. The system writes them by itself, unlike the
            // name.
            for (SMemoryNode& node : g_disk.nodes)
                if (isKilled && !node.isFolder)
                    node.Flush();
            g_disk.EndMachine([](std::size_t) { return std::size_t{0}; }); // only what is flushed is left
            EXPECT_EQ(Runs(), std::string("whole RV001|whole RV001|whole RV001|").substr(0, 12 * earlier) +
                                  (isKilled ? "killed" : "whole") + " RV002 RV003|");
        }
}

} // namespace ruvo::test
