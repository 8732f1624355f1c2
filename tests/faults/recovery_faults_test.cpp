// What recovery makes of an ended run's events where the disk fails once more, or the machine ends.
#include "custody_fixture.h"

#include "dayfile/day_file_writer.h"
#include "ledger/root_folder.h"
#include "ledger/set_aside_append.h"
#include "support/failing_memory.h"
#include "support/fake_system.h"

#include <new>

namespace ruvo::test {

class RecoveryFaults : public Custody {
protected:
    void TearDown() override { g_utcTime.day = 16; }

    static void EndMachine() {
        g_disk.EndMachine([](std::size_t) { return std::size_t{0}; }); // only what is flushed is left
    }
    /// A run is killed at two visits; since then one day file holds `day`, and the other one is torn.
    void Leave(const std::string& day = "") {
        SetUp();
        g_utcTime.day = 16;
        {
            CRunLedger killed(kRoot, [](const SLedgerReport&) {});
            CVisitCustody first(&killed, "RV001"), second(&killed, "RV002");
            Take(first, {1, 2});
            Take(second, {3}, kTorn);
        }
        g_disk.Put(kTorn, "torn");
        if (!day.empty())
            g_disk.Put(kFile, day);
        g_disk.FlushAll();
    }
    /// All days of a week but the last.
    void Wait() {
        for (g_utcTime.day = 17; g_utcTime.day < 23; ++g_utcTime.day)
            BringIn();
        g_disk.FlushAll();
        told.clear();
    }

    static constexpr const char* kTorn = "C:\\ev\\AB12-2\\torn.dat";
};

TEST_F(RecoveryFaults, WhatStandsInADayFileStays) {
    const auto day = [](const std::vector<int>& numbers, std::size_t zeros = 0) {
        return COffFile::HeaderBytes(MakeEventListHeader(1, kEventListText)) + std::string(zeros, '\0') +
               Day(numbers).substr(Day({}).size());
    };
    const std::string aside = FolderOfJournals(kRoot) + "\\x-1.setaside";
    for (const auto& [there, wanted] : {std::pair(std::string(), std::vector{1, 2}),
                                        {day({1}), {1, 2}},
                                        {day({7}), {1, 2, 7}},
                                        {day({1, 2, 8}), {1, 2, 8}},
                                        {day({8}, 2 * Record(1).size()), {1, 2, 8}}})
        for (std::size_t nth = 0; nth == 0 || isReached; ++nth) {
            Leave(there);
            g_disk.Put(aside, "");
            Break(EFileFailure::Other, nth, 1);
            g_disk.faults.front().writesTakePart = true;
            BringIn();
            const std::string left = g_disk.Files()[kFile];
            Mend();
            told.clear();
            if (nth == 0)
                EndMachine();
            BringIn();
            EXPECT_TRUE(nth > 0 || (told.size() == 1 && told[0].outcome == ELedgerOutcome::Waits));
            EXPECT_TRUE(nth > 0 || g_disk.Find(aside)) << "the journal may be about to name it";
            std::vector<int> events = Stored();
            std::ranges::sort(events);
            EXPECT_EQ(events, wanted) << nth;
            EXPECT_TRUE(RecordsOf(left).isSound || !RecordsOf(there).isSound) << nth << ", half a record";
        }
}

TEST_F(RecoveryFaults, WhatHasWaitedForAWeekIsSetAsideOnce) {
    std::string reasons = "|";
    const auto isSetAside = [](const SLedgerReport& report) {
        return report.outcome == ELedgerOutcome::SetAside;
    };
    for (std::size_t nth = 0; isReached; ++nth)
        for (const std::size_t many : {0, 1, 1'000'000}) {
            Leave();
            Wait();
            told.clear();
            Break(EFileFailure::Other, nth, many);
            g_disk.flushesNames = many > 0; // as with the last descriptor in use
            BringIn();
            Mend();
            EXPECT_TRUE(many > 0 || Count(".setaside") == 0) << "no name is left";
            if (many == 1 && std::ranges::none_of(told, isSetAside)) {
                for (const auto& [path, bytes] : g_disk.Files())
                    if (path.ends_with(".setaside"))
                        g_disk.Move(path, "");
                g_disk.flushesNames = false;
                BringIn();
            }
            g_disk.flushesNames = true;
            EndMachine();
            BringIn();
            EXPECT_EQ(Stored(".setaside"), std::vector{3}) << nth << ", " << many << " times";
            EXPECT_EQ(std::pair(Stored(), Count(".journal")), std::pair(std::vector{1, 2}, std::size_t{0}));
            for (const SLedgerReport& report : told)
                reasons += report.reason + "|";
        }
    for (const char* const why :
         {"|the journal cannot be written|", ".setaside cannot be written: failure 1|",
          ".setaside cannot be written: the journal cannot be read|",
          "; some of them may be in the day file|"})
        EXPECT_NE(reasons.find(why), std::string::npos) << why;
    for (const char* const locked : {"C:\\ev", "C:\\ev\\AB12-2"}) { // the day file cannot be made
        Leave();
        g_disk.Move(kTorn, "");
        if (locked == std::string(kRoot))
            g_disk.Move("C:\\ev\\AB12-2", "");
        g_disk.locked = locked;
        Wait();
        BringIn();
        EXPECT_TRUE(!told.empty() && told.back().outcome == ELedgerOutcome::SetAside);
        EXPECT_FALSE(IsTold("in the day file")) << "there is none";
    }
}

TEST_F(RecoveryFaults, OnlyWhatMemoryAloneHasIsSetAsideUnderANameThatIsNotFlushed) {
    const struct {
        bool isJournaled, hasFailed;
        std::vector<int> setAside, stored;
    } cases[] = {{true, false, {}, {1, 2}}, {false, false, {1, 2}, {}}, {true, true, {2}, {1}}};
    for (const auto& row : cases) {
        SetUp();
        told.clear();
        g_disk.flushesNames = row.isJournaled;
        {
            CRunLedger run(kRoot, [this](const SLedgerReport& report) { Tell(report); });
            CVisitCustody custody(&run, "RV001");
            Take(custody, {1});
            if (row.hasFailed)
                run.Journal()->GiveUp();
            EXPECT_EQ(custody.Keep(Record(2), 0), !row.hasFailed);
            g_disk.flushesNames = false;
            custody.SetAside("a password was refused");
            custody.End();
        }
        EXPECT_TRUE(IsTold("could not be flushed"));
        EXPECT_EQ(Stored(".setaside"), row.setAside);
        EXPECT_EQ(Count(".setaside"), row.setAside.empty() ? 0U : 1U);
        if (row.setAside.empty())
            EndMachine();
        g_disk.flushesNames = true;
        BringIn();
        EXPECT_EQ(Stored(), row.stored);
    }
}

TEST_F(RecoveryFaults, ASetAsideFileIsMarkedOnceItsEventsAreStored) {
    for (std::size_t nth = 0; isReached; ++nth) {
        SetUp();
        told.clear();
        {
            CRunLedger run(kRoot, [this](const SLedgerReport& report) { Tell(report); });
            CVisitCustody custody(&run, "RV001"), killed(&run, "RV001");
            Take(custody, {1, 2});
            custody.SetAside("a password was refused");
            custody.End();
            const std::string file = told.front().path;
            killed.NameSource(file.substr(file.rfind('\\') + 1));
            if (nth == 0) {
                EXPECT_EQ(AppendSetAsideFile(run, kRoot, file).failure, "");
                EXPECT_TRUE(run.Journal()->Flush());
                EndMachine();
            } else {
                Take(killed, {1, 2});
                EXPECT_TRUE(killed.AnnounceStore());
            }
        }
        Break(EFileFailure::Other, nth, 1);
        for (int run = 0; run < 2 && nth > 0; ++run, Mend())
            BringIn();
        EXPECT_EQ(Stored(), (std::vector{1, 2})) << nth;
        EXPECT_EQ(std::pair(Count(".setaside"), Count(".setaside.done")),
                  std::pair(std::size_t{0}, std::size_t{1}))
            << nth;
    }
}

TEST_F(RecoveryFaults, AVisitThatCannotBeginLeavesTheJournalToOthers) {
    for (std::size_t nth = 1, needed = 1; nth <= needed; ++nth) {
        SetUp();
        {
            CRunLedger run(kRoot, [](const SLedgerReport&) {});
            CVisitCustody first(&run, "RV001"), second(&run, "RV002");
            try {
                const CFailingMemory memory(nth);
                EXPECT_FALSE(first.Begin(kTorn)) << "no memory is no refusal";
            } catch (const std::bad_alloc&) { // the visit ends
            }
            needed = CFailingMemory::Count();
            first.End();
            Take(second, {1, 2});
        }
        BringIn();
        EXPECT_EQ(Stored(), (std::vector{1, 2})) << nth;
    }
}

TEST_F(RecoveryFaults, AJournalThatIsMadeLastsAndOneAttemptIsEnough) {
    for (std::size_t nth = 0; isReached; ++nth) {
        SetUp();
        CRunLedger run(kRoot, [](const SLedgerReport&) {});
        Break(EFileFailure::Other, nth, 1);
        const CJournalFile* const journal = run.Journal();
        Mend();
        EXPECT_EQ(run.Journal(), journal) << nth;
        EXPECT_EQ(journal == nullptr, g_standardError.starts_with("ruvo: no journal can be made in ")) << nth;
        EndMachine();
        EXPECT_TRUE(journal == nullptr || g_disk.Find(journal->Path())) << nth;
    }
}

TEST_F(RecoveryFaults, ADamagedJournalWithoutPlaceForItsCopyKeepsVisitsFromItsDayFilesAlone) {
    Leave();
    for (const auto& [path, bytes] : g_disk.Files("C:\\var"))
        if (path.ends_with(".journal")) {
            g_disk.Put(path, bytes + std::string(40, 'A'));
            g_disk.PutFolder(path.substr(0, path.rfind('.')) + "-copy.journal.new");
        }
    EXPECT_TRUE(CVisitCustody(&ledger, "RV001").Begin(kFile));
    EXPECT_FALSE(CVisitCustody(&ledger, "RV003").Begin("C:\\ev\\AB12-3\\day.evt"));
}

TEST_F(RecoveryFaults, WhatAJournalMayNameIsNobodyElsesWhileTheFolderCannotBeListed) {
    const std::string folder = FolderOfJournals(kRoot), aside = folder + "\\x-1.setaside";
    for (const bool isAdopted : {false, true})
        for (std::size_t nth = 0; nth == 0 || isReached; ++nth) {
            SetUp();
            g_disk.PutFolder(folder);
            CJournalFile journal;
            SChain chain;
            ASSERT_TRUE(journal.Make(folder, "now") &&
                        journal.Append(EFrame::Visit, 1, chain, Pack(SVisitInfo{})) &&
                        journal.Append(EFrame::SetAside, 1, chain, Pack(SSetAsideInfo{"x-1.setaside", ""})) &&
                        journal.Flush());
            g_disk.Put(aside, "");
            Break(EFileFailure::Other, nth, 1);
            if (isAdopted)
                EXPECT_EQ(AdoptSetAsideFile(aside, kRoot), "") << nth;
            else
                RemoveEmptySetAsideFiles(folder);
            Mend();
            EXPECT_TRUE(g_disk.Find(aside)) << nth;
        }
}

} // namespace ruvo::test
