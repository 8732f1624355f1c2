// What a run makes of the entries that an ended one has left: set-aside files are finished, records that have
// waited for a week are set aside, and those of a set-aside file are appended once.
#include "support/fake_system.h"
#include "support/hex.h"
#include "support/scratch_folder.h"

#include "base/digest.h"
#include "ledger/root_folder.h"
#include "ledger/run_ledger.h"
#include "ledger/set_aside_append.h"
#include "ledger/visit_custody.h"
#include "platform/environment.h"
#include "platform/state_folder.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

namespace ruvo::test {

class Recovery : public testing::Test {
protected:
    Recovery() {
        SetEnvironmentValue("RUVO_STATE_DIR", folder.Native("state"));
        std::filesystem::create_directories(folder.Native("ev"));
        place = FolderOfJournals(folder.Path("ev")).substr(folder.Path().size() + 1);
        std::ranges::replace(place, '\\', '/');
        EXPECT_TRUE(MakePrivateFolder(FolderOfJournals(folder.Path("ev"))));
    }

    /// One whole record.
    static std::string Record(char id) {
        const auto bytes = Hex("00 2F00 01 01000000 3C07 4523 8D 87 10 02 1A 00 00 01 05 05 506C616E74 04 "
                               "44657363 06 414231322D58 12 01 04 54726970 24 01 07 00 01 1500 01000000 0C "
                               "4576656E742056616C756520 24 01 07 00");
        std::string record(bytes.begin(), bytes.end());
        record[4] = record[53] = id;
        return record;
    }
    static std::string Header(const std::string& freeText) {
        return "APP: Parlane\r\nTYPE: EventList\r\nFORMAT: 1.0\r\nNEXTEXTENDED: 000003\r\n\r\n" + freeText +
               "\r\n\x1A";
    }

    /// Leaves the journal of an ended run with one visit: R are records, S is their store frame, W says that
    /// they wait, A names the set-aside file, X one elsewhere; a digit is the cause of a lost event, L is a
    /// lost event without one, and E a record without bytes.
    void Leave(const std::string& frames, const std::string& source = "", const char* file = kDayFile) const {
        SChain chain;
        std::vector<std::uint8_t> bytes;
        std::string journal(kJournalHead);
        const auto add = [&](EFrame kind, std::vector<std::uint8_t> payload) {
            MakeFrame(bytes, kind, 1, chain, payload);
            journal.append(bytes.begin(), bytes.end());
        };
        add(EFrame::Visit,
            Pack(SVisitInfo{"RV001", file, "2026-11-16 23:30:00 UTC", 0, made > 0, made > 1, source}));
        char id = 0;
        for (const char frame : frames)
            if (frame == 'R') {
                const std::string record = Record(++id);
                std::vector<std::uint8_t> payload{static_cast<std::uint8_t>(id), 0, 0, 0};
                payload.insert(payload.end(), record.begin(), record.end());
                add(EFrame::Record, payload);
            } else if (frame == 'L' || frame == 'E') {
                add(frame == 'L' ? EFrame::Lost : EFrame::Record, {});
            } else if (frame >= '0' && frame <= '9') {
                add(EFrame::Lost, {static_cast<std::uint8_t>(frame - '0')});
            } else if (frame == 'W') {
                add(EFrame::Waits, {'1'});
            } else if (frame == 'S') {
                add(EFrame::Store, Pack(SStoreInfo{0, 2, {{0, 2}}}));
            } else {
                const std::string name = frame == 'A' ? kName : std::string("..\\") + kName;
                add(EFrame::SetAside, Pack(SSetAsideInfo{name, "a password was refused"}));
            }
        folder.Write(place + "/ended.journal", journal);
    }
    /// How many things the next run tells; all of them.
    std::size_t BringIn() {
        told.clear();
        CRunLedger ledger(folder.Path("ev"), [this](const SLedgerReport& report) { told.push_back(report); });
        ledger.BringIn();
        return told.size();
    }
    /// The same of the runs of a week; each with how many things it tells, and whether the last one waits.
    std::string BringInForAWeek() {
        std::string all;
        for (int day = 17; day <= 23; ++day) {
            g_utcTime = {2026, 11, day, 23, 30, 0};
            all += std::to_string(BringIn());
            all += !told.empty() && told.back().outcome == ELedgerOutcome::Waits ? "w " : " ";
        }
        return all;
    }
    bool HasJournal() const { return folder.Has(place + "/ended.journal"); }
    std::string InState(const std::string& name) const { return place + "/" + name; }
    /// A text that names files, the same on every system; "@" is the state folder.
    std::string Plain(std::string text) const {
        std::string at = folder.Native(place);
        std::ranges::replace(at, '\\', '/');
        std::ranges::replace(text, '\\', '/');
        const std::size_t found = text.find(at);
        return found == std::string::npos ? text : text.replace(found, at.size(), "@");
    }
    std::string Aside() const { return folder.Read(InState(kName)); }
    std::string Day() const { return folder.Read("ev/AB12-1/AB12-1-2026-11-16-DEV.evt"); }
    void WriteDay(const std::string& bytes) const {
        std::filesystem::create_directories(folder.Native("ev/AB12-1"));
        folder.Write("ev/AB12-1/AB12-1-2026-11-16-DEV.evt", bytes);
    }

    static constexpr const char* kDayFile = "AB12-1\\AB12-1-2026-11-16-DEV.evt";
    static constexpr const char* kDayFileHere = "AB12-1/AB12-1-2026-11-16-DEV.evt";
    static constexpr const char* kName = "AB12-1-2026-11-16-DEV-1.setaside";
    const std::string both = Record(1) + Record(2);
    const std::string refused =
        Header("set aside|AB12-1\\AB12-1-2026-11-16-DEV.evt|RV001|2026-11-16 23:30:00 "
               "UTC|a password was refused") +
        both;
    CScratchFolder folder;
    std::string place;
    int made = 0; ///< by the visit of the journal that is left: 1 for the day file, 2 for its folder, too
    std::vector<SLedgerReport> told;
};

TEST_F(Recovery, ASetAsideFileIsFinishedWhereverItsWritingEnded) {
    const struct {
        const char* name;
        std::string there;
    } cases[] = {{"only its name", ""},
                 {"a part", refused.substr(0, 200)},
                 {"all of it", refused},
                 {"something longer", refused + "zzz"}};
    for (const auto& row : cases) {
        Leave("RRA");
        folder.Write(InState(kName), row.there);
        ASSERT_EQ(BringIn(), 1U) << row.name;
        EXPECT_EQ(told[0], (SLedgerReport{ELedgerOutcome::SetAside, 2, told[0].path, "", "RV001",
                                          "2026-11-16 23:30:00 UTC", "a password was refused"}));
        EXPECT_TRUE(told[0].path.ends_with(std::string("\\") + kName)) << told[0].path;
        EXPECT_EQ(Aside(), refused) << row.name;
        EXPECT_FALSE(HasJournal() || folder.Has("ev/AB12-1")) << row.name << ": never the day file";
    }
    std::filesystem::rename(folder.Native(InState(kName)), folder.Native(InState(kName) + ".done"));
    Leave("RRA");
    EXPECT_EQ(BringIn(), 0U) << "its records are in the day file already";
    EXPECT_FALSE(HasJournal() || folder.Has(InState(kName)));
    folder.Write(InState(kName), "");
    BringIn();
    EXPECT_FALSE(folder.Has(InState(kName))) << "one that was ended before its first byte goes";
}

TEST_F(Recovery, TheEmptyDayFileOfAnEndedVisitGoes) {
    for (const char* frames : {"", "1", "RRA"})
        for (made = 0; made <= 2; ++made)
            for (const std::string bytes : {"", "x"}) {
                WriteDay(bytes);
                Leave(frames);
                EXPECT_EQ(BringIn(), *frames == '\0' ? 0U : 1U) << frames;
                EXPECT_NE(folder.Has("ev/" + std::string(kDayFileHere)), made > 0 && bytes.empty())
                    << frames << made << bytes;
                EXPECT_NE(folder.Has("ev/AB12-1"), made > 1 && bytes.empty()) << frames << made << bytes;
            }
}

TEST_F(Recovery, LostEventsAreToldByTheirCause) {
    Leave("L1122R4935");
    ASSERT_EQ(BringIn(), 6U);
    std::string all;
    for (const SLedgerReport& report : told)
        all += (report.outcome == ELedgerOutcome::PassedOver ? "passed over" : report.reason) + " " +
               std::to_string(report.events) + "|";
    EXPECT_EQ(all,
              " 1|not known 3|passed over 2|a reply that makes no sense 2|a record that could not be read 1|"
              "no memory 1|");
}

TEST_F(Recovery, ADamagedJournalIsReportedOnceAndKept) {
    Leave("RR");
    const std::string journal = folder.Read(InState("ended.journal")) + std::string(40, '\x41');
    folder.Write(InState("ended.journal"), journal);
    ASSERT_EQ(BringIn(), 2U);
    EXPECT_EQ(told[0].outcome, ELedgerOutcome::DamagedJournal);
    EXPECT_TRUE(told[1].outcome == ELedgerOutcome::Stored && Day().ends_with(both) && !HasJournal());
    EXPECT_EQ(folder.Read(InState("ended.journal.damaged")), journal) << "as it was";
    EXPECT_EQ(BringIn(), 0U);
    folder.Write(InState("ended.journal"), journal);
    BringIn();
    EXPECT_EQ(Day().find(both), Day().size() - both.size()) << "once, although an end left the journal, too";
    Leave("RRER"); // what follows something that makes no sense is not believed
    EXPECT_TRUE(BringIn() == 2 && told[1].events == 2);
    EXPECT_FALSE(HasJournal() || folder.Has(InState("ended-copy.journal.damaged")));
}

TEST_F(Recovery, WhatWaitsSaysWhy) {
    const struct {
        const char* name;
        const char* frames;
        const char* file;
        std::function<void(CFile& held)> prepare;
        std::string reason; ///< how it begins; the rest are the system's words
    } cases[] = {
        {"a place outside", "RR", "..\\outside", [](CFile&) {}, "its name leads out of the event root"},
        {"a set-aside file outside", "RRX", kDayFile, [](CFile&) {},
         "the name of its set-aside file leads elsewhere"},
        {"a set-aside file that is held", "RRA", kDayFile,
         [&](CFile& held) {
             const SOpenMode make{.read = true, .write = true, .create = true};
             const std::string path = folder.Path(InState(kName));
             EXPECT_TRUE(held.Open(path, make).Good() && held.TryLock() == EFileLock::Taken);
         },
         std::string("set-aside file @/") + kName + " cannot be written: another run holds the file"},
        {"a damaged journal without a place for its copy", "RR", kDayFile,
         [&](CFile&) {
             folder.Write(InState("ended.journal"),
                          folder.Read(InState("ended.journal")) + std::string(40, '\x41'));
             std::filesystem::create_directories(folder.Native(InState("ended-copy.journal.new")));
         },
         "the journal is damaged, and cannot be copied: "},
        {"a day file that is none", "RR", kDayFile,
         [&](CFile&) { std::filesystem::create_directories(folder.Native("ev/") + kDayFileHere); },
         "Day file " + folder.Native("ev/") + kDayFileHere + " is not a regular file in a folder"},
    };
    for (const auto& row : cases) {
        Leave(row.frames, "", row.file);
        CFile held;
        row.prepare(held);
        EXPECT_EQ(BringIn(), 1U) << row.name;
        ASSERT_FALSE(told.empty()) << row.name;
        EXPECT_EQ(told[0].outcome, ELedgerOutcome::Waits) << row.name;
        EXPECT_TRUE(Plain(told[0].reason).starts_with(Plain(row.reason)))
            << row.name << ": " << told[0].reason;
        EXPECT_TRUE(HasJournal() && told[0].journal.ends_with(".journal")) << row.name;
    }
    BringInForAWeek();
    EXPECT_TRUE(told[0].reason.ends_with("; some of them may be in the day file")) << told[0].reason;
}

TEST_F(Recovery, WhatIsNotAppendedSaysWhy) {
    const struct {
        const char* name;
        std::string file; ///< what the set-aside file holds
        std::function<void(CFile& held)> prepare;
        std::string failure;
    } cases[] = {
        {"no set-aside file", Header("headerText") + both, [](CFile&) {},
         "it is no set-aside file, or cannot be read"},
        {"no record", refused.substr(0, refused.size() - both.size()), [](CFile&) {}, "it holds no record"},
        {"one that is held", refused,
         [&](CFile& held) {
             EXPECT_TRUE(held.Open(folder.Path(InState(kName)), {.read = true, .write = true}).Good() &&
                         held.TryLock() == EFileLock::Taken);
         },
         "another run works on it"},
        {"one that an ended run has begun to append", refused, [&](CFile&) { Leave("RRS", kName); },
         "it has been appended already"},
        {"one whose new name is taken", refused,
         [&](CFile&) { std::filesystem::create_directories(folder.Native(InState(kName) + ".done/x")); },
         "its events are in the day file, but it cannot be marked; the next run tries again"},
        {"no place for a journal", refused,
         [&](CFile&) { SetEnvironmentValue("RUVO_STATE_DIR", "D:\\state"); }, "no journal can be made"},
    };
    for (const auto& row : cases) {
        std::filesystem::remove_all(folder.Native("ev/AB12-1"));
        std::filesystem::remove_all(folder.Native(InState(kName) + ".done"));
        folder.Write(InState(kName), row.file);
        CFile held;
        row.prepare(held);
        CRunLedger ledger(folder.Path("ev"), [](const SLedgerReport&) {});
        const SAppendedFile appended =
            AppendSetAsideFile(ledger, folder.Path("ev"), folder.Path(InState(kName)));
        EXPECT_EQ(appended.failure, row.failure) << row.name;
    }
    EXPECT_EQ(g_standardError, "ruvo: no journal can be made in " + FolderOfJournals(folder.Path("ev")) +
                                   "; until a visit ends, an end of the run would cost its events");
    g_standardError.clear();
}

/// Programs of several versions may share a state folder.
TEST_F(Recovery, WhatOtherVersionsReadStaysAsItIs) {
    made = 1;
    Leave("RL1ASW", "source");
    EXPECT_EQ(DigestOf(folder.Read(InState("ended.journal"))), "40A56AC219365833");
    EXPECT_TRUE(folder.Read(InState("ended.journal")).starts_with("RUVO JOURNAL 1\r\n"));
    EXPECT_TRUE(PrepareRootFolder(FolderOfJournals(folder.Path("ev")), folder.Path("ev")));
    EXPECT_EQ(Plain(folder.Read(InState("event-root.txt"))), Plain(folder.Native("ev") + "\n"));
}

/// An end came between the copy and the new name of what it was made of.
TEST_F(Recovery, ADamagedJournalIsPutAwayBeforeItsCopyGoes) {
    Leave("RR");
    const std::string journal = folder.Read(InState("ended.journal"));
    folder.Write(InState("ended-copy.journal"), journal);
    folder.Write(InState("ended.journal"), journal + std::string(40, '\x41'));
    ASSERT_EQ(BringIn(), 2U);
    EXPECT_EQ(told[0].outcome, ELedgerOutcome::DamagedJournal);
    EXPECT_EQ(told[1].outcome, ELedgerOutcome::Stored);
    EXPECT_FALSE(HasJournal() || folder.Has(InState("ended-copy.journal")));
    EXPECT_EQ(Day().find(both), Day().size() - both.size());
}

TEST_F(Recovery, WhatWaitsInADamagedJournalIsSetAsideAfterAWeek) {
    const std::string torn = Header("headerText") + Record(1).substr(0, 30) + "x";
    Leave("RR");
    WriteDay(torn);
    folder.Write(InState("ended.journal"), folder.Read(InState("ended.journal")) + std::string(40, '\x41'));
    EXPECT_EQ(BringInForAWeek(), "2w 1w 1w 1w 1w 1w 1 ");
    EXPECT_TRUE(Aside().ends_with(both));
    EXPECT_FALSE(HasJournal() || folder.Has(InState("ended-copy.journal")));
    EXPECT_EQ(Day(), torn);
}

TEST_F(Recovery, WhatHasWaitedForAWeekIsSetAside) {
    Leave("RR");
    const std::string torn = Header("headerText") + Record(1) + Record(2).substr(0, 30);
    WriteDay(torn + "x"); // not what the visit would have left
    ASSERT_EQ(BringInForAWeek(), "1w 1w 1w 1w 1w 1w 1 ") << "as long as it has a journal";
    EXPECT_TRUE(told[0].outcome == ELedgerOutcome::SetAside && !HasJournal());
    EXPECT_EQ(told[0].reason, "they had waited for a week: the file does not end with a whole record");
    EXPECT_EQ(Aside(),
              Header("set aside|AB12-1\\AB12-1-2026-11-16-DEV.evt|RV001|2026-11-16 23:30:00 UTC|they had "
                     "waited for a week: the file does not end with a whole record") +
                  Record(2))
        << "the first one stands in the day file";
    EXPECT_EQ(Day(), torn + "x");
    Leave("RR", "", "..\\outside");
    BringInForAWeek();
    EXPECT_FALSE(HasJournal());
    EXPECT_TRUE(folder.Read(InState("outside-1.setaside")).ends_with(both));
}

TEST_F(Recovery, TheRecordsOfASetAsideFileAreAppendedOnce) {
    const struct {
        const char* name;
        const char* frames;
        bool isMarked; ///< before the end
        std::string day;
        std::string wantedDay;
    } cases[] = {{"an end before the store frame", "RR1", false, "", ""},
                 {"a single record", "RS", false, "", Header("headerText") + Record(1)},
                 {"an end before the day file's first byte", "RRS", false, "", Header("headerText") + both},
                 {"an end before the name was changed", "RRS", false, Header("headerText") + both,
                  Header("headerText") + both},
                 {"an end before the entry was done", "RRS", true, Header("headerText") + both,
                  Header("headerText") + both}};
    for (const auto& row : cases) {
        std::filesystem::remove_all(folder.Native("ev/AB12-1"));
        std::filesystem::remove(folder.Native(InState(kName) + ".done"));
        folder.Write(InState(std::string(kName) + (row.isMarked ? ".done" : "")), refused);
        if (!row.day.empty())
            WriteDay(row.day);
        Leave(row.frames, kName);
        EXPECT_EQ(BringIn(), row.wantedDay.empty() ? 0U : 1U) << row.name;
        EXPECT_EQ(Day(), row.wantedDay) << row.name;
        EXPECT_EQ(folder.Has(InState(kName)), row.wantedDay.empty()) << row.name;
        EXPECT_EQ(folder.Has(InState(kName) + ".done"), !row.wantedDay.empty()) << row.name;
        EXPECT_FALSE(HasJournal()) << row.name;
    }
}

/// To cut it costs a wait for the disk, so it is done once in many visits.
TEST_F(Recovery, AJournalIsCutOnceItIsLong) {
    CRunLedger ledger(folder.Path("ev"), [](const SLedgerReport&) {});
    const std::string record = Record(1);
    const std::span image(reinterpret_cast<const std::uint8_t*>(record.data()), record.size());
    const auto visit = [&](std::uint64_t bytes) {
        CVisitCustody custody(&ledger, "RV001");
        EXPECT_FALSE(custody.Begin(folder.Path("ev") + "\\" + kDayFile));
        for (std::uint64_t kept = 0; kept < bytes; kept += record.size())
            EXPECT_TRUE(custody.Keep(image, 1));
        custody.Store();
        custody.End();
        ledger.CloseAll();
        return ledger.Journal()->End();
    };
    const std::uint64_t first = visit(1'000);
    EXPECT_GT(first, 1'000U);
    EXPECT_GT(visit(200'000), first + 200'000U) << "behind what is done";
    EXPECT_EQ(visit(1'000'000), kJournalHead.size());
}

// An event root that a visit made is removed again when nothing could be written into it.
TEST_F(Recovery, FindsTheJournalOfAnEventRootThatIsGone) {
    Leave("RR");
    std::filesystem::remove_all(folder.Native("ev"));
    EXPECT_EQ(BringIn(), 1U);
    EXPECT_EQ(Day(), Header("headerText") + both);
    EXPECT_FALSE(HasJournal());
}

} // namespace ruvo::test
