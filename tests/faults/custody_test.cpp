// What keeps the events of one visit, and what stores a set-aside file, with a disk that fails: read errors,
// journals that cannot be written any more, lengths that the system does not tell.
#include "crash_case.h"
#include "custody_fixture.h"

#include "dayfile/block_parser.h"
#include "dayfile/day_file_writer.h"
#include "ledger/set_aside_append.h"

namespace ruvo::test {

TEST_F(Custody, AJournalThatFailsIsNamedAndANewOneTakesItsPlace) {
    for (int visit = 1; visit <= 4; ++visit) {
        CVisitCustody custody(&ledger, "RV001");
        Take(custody, {10 * visit}, kFile + std::to_string(visit) + ".evt");
        EXPECT_EQ(custody.HasJournal(), visit < 4) << visit;
        Break(EFileFailure::Other);
        EXPECT_EQ(custody.Keep(Record(10 * visit + 1), 0), visit == 4) << "the visit has to end";
        Mend();
        custody.Store();
        EXPECT_EQ(custody.StoredCount(), 2U);
        custody.End();
    }
    for (const char* const said :
         {"-1.journal has failed: failure 1ruvo: journal ", "-2.journal has failed: failure 1ruvo: journal ",
          "-3.journal has failed: failure 1; no other is made: "})
        EXPECT_NE(g_standardError.find(said), std::string::npos) << g_standardError;
    EXPECT_EQ(Count(".journal"), 3U);
}

TEST_F(Custody, TheLastJournalOfARunIsNamedTooAndNothingComesTwice) {
    for (const std::string what : {"a frame", "its flush", "a frame, before an end of the machine"}) {
        SetUp();
        g_disk.flushEvery = what == "its flush" ? 1 : 0;
        {
            CRunLedger own(kRoot, [](const SLedgerReport&) {});
            CVisitCustody custody(&own, "RV001");
            FailAtSecond(custody, what == "its flush" ? 2 : 1);
            custody.Store();
            custody.End();
            if (what.ends_with("machine"))
                g_disk.EndMachine([](std::size_t) { return std::size_t{0}; }); // only what is flushed is left
            EXPECT_EQ(Stored(), (std::vector{1, 2})) << what;
        }
        EXPECT_TRUE(g_standardError.ends_with(".journal has failed: failure 1")) << g_standardError;
        BringIn();
        EXPECT_EQ(std::pair(Stored(), Count(".journal")), std::pair(std::vector{1, 2}, std::size_t{0}));
    }
}

TEST_F(Custody, WhatWaitsKeepsOtherVisitsFromItsDayFileAlone) {
    const std::string other = "C:\\ev\\AB12-2\\day.evt", third = "C:\\ev\\AB12-3\\day.evt";
    const auto refusal = [](CRunLedger& run, const std::string& path) {
        CVisitCustody custody(&run, "RV002");
        const auto failure = custody.Begin(path);
        custody.End();
        return failure ? failure->why : std::string();
    };
    const std::string begin = "Events of an earlier visit still wait for day file ";
    for (const bool fails : {false, true}) { // the journal
        SetUp();
        {
            CRunLedger run(kRoot, [](const SLedgerReport&) {});
            CVisitCustody stored(&run, "RV001"), open(&run, "RV001"), killed(&run, "RV001");
            Take(stored, {5}, other);
            stored.Store();
            stored.End();
            fails ? FailAtSecond(open) : Take(open, {1});
            open.End();
            EXPECT_EQ(refusal(run, third), "");
            EXPECT_EQ(refusal(run, kFile), begin + "/ev/AB12-1/AB12-1-2026-11-16-DEV.evt");
            EXPECT_EQ(refusal(run, other), fails ? begin + "/ev/AB12-2/day.evt" : "");
            Take(killed, {9}, third);
        }
        g_disk.Put(kFile, Day({}, "torn"));
        CRunLedger next(kRoot, [](const SLedgerReport&) {});
        EXPECT_TRUE(refusal(next, kFile).starts_with(begin) && refusal(next, other).empty());
        BringIn();
        EXPECT_EQ(Stored(), (std::vector{5, 9}));
    }
}

/// The last frames of short visits wait until the names of their folders are flushed, all at once.
TEST_F(Custody, VisitsThatAreClosedTogetherLoseNothing) {
    constexpr int kVisits = 17; // one more than are closed together
    for (const std::string end : {"of the machine", "with a flush that fails", "of a run"}) {
        SetUp();
        told.clear();
        std::size_t waiting = 0;
        std::vector<int> all;
        {
            CRunLedger own(kRoot, [&](const SLedgerReport& report) {
                EXPECT_EQ(report.reason, "the names of the folders could not be flushed");
                waiting += report.outcome == ELedgerOutcome::Waits ? report.events : 0;
            });
            for (int visit = 1; visit <= kVisits; ++visit) {
                CVisitCustody custody(&own, "RV001");
                Take(custody, {visit}, "C:\\ev\\AB12-" + std::to_string(100 + visit) + "\\day.evt");
                custody.Store();
                EXPECT_EQ(custody.StoredCount(), 1U);
                custody.End();
                all.push_back(visit);
            }
            if (end == "of the machine")
                g_disk.EndMachine([](std::size_t) { return std::size_t{0}; }); // only what is flushed is left
            Break(EFileFailure::Other, 1, end == "of a run" ? 0 : 1'000'000);
        }
        Mend();
        g_disk.EndProcess();
        EXPECT_EQ(waiting, end == "of a run" ? 0U : 1U) << end;
        EXPECT_EQ(g_standardError.ends_with(" has failed: failure 1"), end != "of a run") << g_standardError;
        EXPECT_EQ(Stored().size() == kVisits, end != "of the machine") << end;
        BringIn();
        EXPECT_EQ(Stored(), all) << end;
        EXPECT_EQ(told.size(), waiting) << end << ": the others were closed";
        EXPECT_EQ(Count(".journal"), 0U) << end;
    }
}

TEST_F(Custody, AnEventRootThatHasJustBeenMadeSurvivesTheMachine) {
    const std::string root = "C:\\made\\now";
    EXPECT_TRUE(MakeFolder("C:\\made").Good() && MakeFolder(root).Good());
    {
        CRunLedger own(root, [](const SLedgerReport&) {});
        CVisitCustody custody(&own, "RV001");
        Take(custody, {1}, root + "\\AB12-1\\day.evt");
        custody.Store();
        custody.End();
    }
    g_disk.EndMachine([](std::size_t) { return std::size_t{0}; }); // only what is flushed is left
    EXPECT_EQ(std::pair(Stored(), Count(".journal")), std::pair(std::vector{1}, std::size_t{0}));
}

TEST_F(Custody, ABeginThatFailsSaysWhy) {
    const struct {
        EFileFailure failure;
        std::size_t many; ///< operations fail
        const char* refusal;
        const char* said;
    } rows[] = {{EFileFailure::DiskFull, 1, "There is no room for journal ", ""},
                {EFileFailure::Other, 1, "", "-1.journal has failed: failure 1"},
                {EFileFailure::Other, 1'000, "", "ruvo: no journal can be made in "}};
    for (const auto& row : rows) {
        bool isMet = false;
        for (std::size_t nth = 1; nth <= 40 && !isMet; ++nth) {
            g_standardError.clear();
            CRunLedger own(kRoot, [](const SLedgerReport&) {});
            ASSERT_NE(own.Journal(), nullptr);
            CVisitCustody custody(&own, "RV001");
            Break(row.failure, nth, row.many);
            const auto failure = custody.Begin(kFile);
            Mend();
            isMet = *row.refusal != '\0' ? failure && failure->why.starts_with(row.refusal)
                                         : !failure && custody.HasJournal() == (row.many == 1) &&
                                               g_standardError.find(row.said) != std::string::npos;
            custody.End();
        }
        EXPECT_TRUE(isMet && (row.many > 1 || Count(".journal") == 0)) << row.said << g_standardError;
    }
}

TEST_F(Custody, WhatAFailedJournalHasIsSetAsideAndNotStored) {
    CVisitCustody custody(&ledger, "RV001");
    FailAtSecond(custody);
    custody.SetAside("a password was refused");
    EXPECT_EQ(std::tuple(custody.SetAsideCount(), custody.WaitingCount()), std::tuple(2U, 0U));
    custody.End();
    EXPECT_EQ(Stored(".setaside"), (std::vector{1, 2}));
    EXPECT_FALSE(CVisitCustody(&ledger, "RV001").Begin(kFile)) << "nothing waits for it";
    BringIn();
    EXPECT_EQ(Stored(), std::vector<int>());
}

TEST_F(Custody, WhatCannotBeReadOfAFailedJournalWaitsThere) {
    bool hasWaited = false;
    for (std::size_t nth = 1; isReached; ++nth) {
        SetUp();
        {
            CRunLedger run(kRoot, [this](const SLedgerReport& report) { Tell(report); });
            CVisitCustody custody(&run, "RV001");
            FailAtSecond(custody);
            Break(EFileFailure::Other, nth, 1);
            custody.SetAside("a password was refused");
            Mend();
            hasWaited = hasWaited || (custody.SetAsideCount() == 1 && custody.WaitingCount() == 1);
            custody.End();
        }
        BringIn();
        const auto isIn = [](const std::string& ending) { return std::ranges::count(Stored(ending), 1); };
        EXPECT_TRUE(isIn(".evt") + isIn(".setaside") >= 1 && isIn(".evt") <= 1) << "failed at " << nth;
    }
    EXPECT_TRUE(hasWaited && IsTold(" cannot be written: the journal cannot be read"));
}

TEST_F(Custody, AReadErrorIsNoEnd) {
    const std::string torn = Day({}, std::string(40, 'x'));
    g_disk.Put(kFile, torn);
    bool isRead = true;
    for (std::size_t nth = 1; isReached; ++nth) {
        CVisitCustody custody(&ledger, "RV001");
        Break(EFileFailure::Other, nth, 1);
        const auto failure = custody.Begin(kFile);
        Mend();
        ASSERT_TRUE(failure) << "events would be taken at " << nth;
        isRead = isRead && failure->why.find("cannot be read to its end") == std::string::npos;
        custody.End();
    }
    EXPECT_TRUE(!isRead && g_disk.Files().at(kFile) == torn);
}

TEST_F(Custody, WhatIsMissingIsKnownFromAFileThatCouldBeRead) {
    std::size_t silent = 0;
    for (std::size_t nth = 0; isReached; ++nth) {
        SetUp();
        {
            CRunLedger killed(kRoot, [](const SLedgerReport&) {});
            CVisitCustody custody(&killed, "RV001");
            Take(custody, {1, 2, 2, 3});
            EXPECT_TRUE(custody.AnnounceStore());
        }
        g_disk.Put(kFile, Day({7, 2}));
        Break(EFileFailure::Other, nth + 1, nth == 0 ? 0 : 1);
        g_disk.faults.front().writesTakePart = true;
        const std::size_t toldBefore = told.size();
        BringIn();
        silent += told.size() == toldBefore && Stored().size() < 5 ? 1 : 0;
        const std::string left = g_disk.Files().at(kFile);
        EXPECT_TRUE(left == Day({7, 2}) || left == Day({7, 2, 1}) || left == Day({7, 2, 1, 2, 3})) << nth;
        Mend();
        BringIn();
        EXPECT_TRUE(Stored() == (std::vector{7, 2, 1, 2, 3}) && Count(".journal") == 0)
            << "failed at " << nth;
    }
    EXPECT_TRUE(silent <= 1 && // a journal that cannot be examined is one in use
                IsTold("the file cannot be read") && IsTold("the journal cannot be read") &&
                IsTold("its journal or its day file cannot be read"));
}

TEST_F(Custody, ASetAsideFileIsStoredOnceWhateverFails) {
    std::string failures;
    for (std::size_t nth = 0; isReached; ++nth) {
        for (const std::size_t many : {std::size_t{1}, std::size_t{1'000'000}}) {
            SetUp();
            std::string file;
            {
                CRunLedger own(kRoot, [&](const SLedgerReport& report) { file = report.path; });
                CVisitCustody custody(&own, "RV001");
                Take(custody, {1, 2});
                custody.SetAside("a password was refused");
                custody.End();
            }
            Break(EFileFailure::Other, nth + 1, nth == 0 ? 0 : many);
            {
                CRunLedger recover(kRoot, [](const SLedgerReport&) {});
                const SAppendedFile appended = AppendSetAsideFile(recover, kRoot, file);
                EXPECT_TRUE(!appended.failure.empty() || appended.events == 2) << nth << appended.failure;
                failures += appended.failure + "|";
            }
            Mend();
            g_disk.EndProcess();
            BringIn();
            CRunLedger again(kRoot, [](const SLedgerReport&) {});
            static_cast<void>(AppendSetAsideFile(again, kRoot, file));
            EXPECT_EQ(Stored(), (std::vector{1, 2})) << "failed at " << nth << ", " << many << " times";
        }
    }
    for (const char* const why : {"|it cannot be read|", "|there is no room for the journal|",
                                  "|its journal cannot be written; nothing has been stored|",
                                  "; its events wait in the journal for the next run|"})
        EXPECT_NE(failures.find(why), std::string::npos) << why;
}

TEST_F(Custody, ALengthThatIsNotToldIsTheOneThatIsKnown) {
    CHeldDayFile file;
    ASSERT_FALSE(file.Hold(kFile));
    file.StartAt(file.LengthNow(), MakeEventListHeader(1, kEventListText));
    file.Add(Record(1));
    file.Finish();
    const std::uint64_t length = file.WrittenTo();
    for (const std::size_t nth : {1U, 2U, 3U}) { // the question whether it is there, and that for its length
        Break(EFileFailure::Other, nth, 1);
        EXPECT_EQ(file.LengthNow(), length) << nth;
        Mend();
    }
    file.StartAt(file.LengthNow(), MakeEventListHeader(1, kEventListText));
    file.Add(Record(2));
    file.Finish();
    EXPECT_EQ(Stored(), (std::vector{1, 2}));
}

TEST_F(Custody, AVisitEndsWhenTheDiskTakesNoMore) {
    const std::uint64_t least =
        std::size_t{64} * 1024 + kMaxRecordImage; // for the day file, at the first look
    const struct {
        SFreeSpace room;  ///< from the first event on
        const char* full; ///< a folder below which files take no more, likewise
        const char* told; ///< empty: the visit goes on
    } cases[] = {{{10'000'000, 1}, "", ""},
                 {{10'000'000, {}}, "", ""},
                 {{{}, 1}, "", ""},
                 {{least - 1, 1}, "", "; there is no room for more in the disk of "},
                 {{{}, 0}, "", " can take no more files, and the rest waits in the relay"},
                 {{},
                  "C:\\var\\state",
                  "This visit has taken 4 events; there is no room for more in the journal, and the rest "
                  "waits in the relay"}};
    const SCrashCase test{.name = "long records", .cells = 200};
    CFaultRig rig{LoadSubstation("[link]\nserial = [\"COM1\"]\n" + RelayText(test, kTested, true))};
    const SMemoryDisk disk = g_disk;
    for (const auto& row : cases) {
        rig.onEvent = [&row](int) {
            const std::lock_guard lock(g_diskLock);
            g_disk.room = row.room;
            g_disk.full = row.full;
        };
        const SOutcome outcome = rig.RunOn(disk, {});
        const bool isWhole =
            outcome.notes.taken == kEvents.size() && !outcome.IsTold("This visit has taken ");
        EXPECT_TRUE(isWhole == (*row.told == '\0') && outcome.IsTold(row.told))
            << row.told << outcome.Log() << outcome.debug;
    }
}

} // namespace ruvo::test
