// What single steps come to when the disk fails within them, or others are at work there: places that are
// proved, day files that are held and flushed, folders and set-aside files that are made, journals that are
// looked for, lines of the log.
#include "fault_rig.h"

#include "dayfile/day_file_reader.h"
#include "dayfile/day_file_writer.h"
#include "ledger/leftovers.h"
#include "ledger/run_ledger.h"
#include "ledger/visit_custody.h"
#include "log/ledger_lines.h"
#include "log/visit_lines.h"
#include "paths/path_utilities.h"

namespace ruvo::test {

namespace {

const std::string kRoot = "C:\\ev", kDay = "C:\\ev\\AB12\\f.evt", kNew = "C:\\ev\\AB12\\new.evt";
constexpr const char* kLog = "C:\\RUVO_Errors.log";

void Start() {
    g_disk = {};
    for (const char* file : {"C:\\ev\\AB12\\f.evt", "C:\\ev\\f-1.setaside", kLog})
        g_disk.Put(file, "x");
    CRunContext context;
    context.SetDestinationRoot("C:");
    context.SetDestinationFromRegistry(true);
    ResolveErrorLogPath(context, false);
    g_debugOutput.clear();
}
/// The operation of that number, counted from the next one.
void Break(std::size_t nth, EFileFailure failure = EFileFailure::Other) {
    g_disk.faults.push_back({g_disk.operations + nth, g_disk.operations + nth, failure});
}
const std::vector<std::uint8_t> kImage(40, 'r');

/// The steps, with their outcomes in words.
std::string Hold(const std::string& path) {
    CHeldDayFile file;
    return file.Hold(path).value_or(SHoldFailure{.why = "held"}).why;
}
/// A folder takes the place of the file that is held.
std::string Lose() {
    CHeldDayFile file;
    EXPECT_FALSE(file.Hold(kDay));
    EXPECT_TRUE(RemoveFile(kDay) && MakeFolder(kDay).Good());
    static_cast<void>(file.LengthNow());
    try {
        file.StartAt(0, {});
    } catch (const CFileException& raised) {
        return raised.GetPath() + ": " + raised.what();
    }
    return "";
}
/// Where what is found in a day file begins.
std::string Read() {
    const std::string header = COffFile::HeaderBytes(MakeEventListHeader(1, kEventListText));
    g_disk.Put(kDay, header);
    CDayFileReader reader;
    std::string found;
    EXPECT_TRUE(reader.Open(kDay).Good());
    for (SDayFileItem item; reader.Next(item);)
        found += item.IsReadFailure() && item.offset == header.size() ? "unread behind the header" : "more";
    return found;
}
std::string MakeAside() {
    CSetAsideFile file;
    return file.Make(kRoot, kDay) && file.FlushName() ? file.Name() : NotSetAsideText(file);
}
std::string Tell() {
    WriteLogLine("a line", ELineWorth::TellsOfLoss);
    return g_debugOutput.substr(0, g_debugOutput.find(". Line lost: "));
}
std::string LookAt(const std::string& journal = std::string(kJournalHead)) {
    g_disk.Put("C:\\ev\\x.journal", journal);
    const SLeftovers left = ReadLeftovers(kRoot);
    return std::to_string(left.isRead) + " " + std::to_string(left.damaged.size());
}
std::string BringIn(const std::string& journal = std::string(kJournalHead)) {
    std::string told;
    g_disk.Put("C:\\ev\\x.journal", journal);
    CRunLedger(kRoot, [&](const SLedgerReport& report) { told += LedgerText(report); }).BringInFrom(kRoot);
    return g_disk.Files().contains("C:\\ev\\x.journal") ? told : "gone";
}

} // namespace

TEST(StepFaults, AStepGoesOnOrSaysWhatStandsInItsWay) {
    using enum EFileFailure;
    const std::string day = "Day file /ev/AB12/f.evt", log = "Error log /RUVO_Errors.log: ";
    const std::string left = " It is left unchanged", again = "; the next run tries again.";
    const std::string unread = "Journal /ev/x.journal cannot be read." + left + again;
    const struct {
        std::function<std::string()> step;
        std::size_t failing; ///< the number of the operation; 0 for none
        EFileFailure failure;
        std::string want;
        std::size_t count = 1; ///< of the operations that fail, each the sixth after the one before
    } cases[] = {
        {[] { return Hold(kDay); }, 6, Other, "held", 3},
        {[] { return Hold(kDay); }, 6, Other, day + " keeps being replaced", 4},
        {[] { return Hold(kDay); }, 7, Other, day + ": failure 1"},
        {[] { return Hold(kDay); }, 2, AccessDenied, day + ": failure 5"},
        {[] { return Hold(kDay); }, 2, BadPath, "held"},
        {[] { return Hold(kNew); }, 3, NotFound, "held"},
        {Read, 0, None, ""},
        {Read, 3, Other, "unread behind the header"},
        {Lose, 0, None, kDay + ": " + day + ": failure 5"},
        {[] { return std::to_string(EnsureFolderOfFile("C:\\a\\b\\c\\f")); }, 8, BadPath, "1"},
        {[] { return std::to_string(EnsureFolderOfFile("C:\\a\\b\\c\\f")); }, 8, Exists, "1", 3},
        {[] { return std::to_string(EnsureFolderOfFile("C:\\a\\b\\c\\f")); }, 8, Exists, "0", 4},
        {[] { return std::to_string(EnsureFolderOfFile("C:\\a\\b\\c\\f")); }, 8, AccessDenied, "0"},
        {[] { return std::to_string(CanCreateFile(kNew)); }, 1, AccessDenied, "1"},
        {[] { return std::to_string(CanCreateFile(kNew)); }, 1, Other, "0"},
        {[] { return std::to_string(CanCreateFile(kDay)); }, 1, AccessDenied, "0"},
        {[] { return std::to_string(ReadLeftovers(kRoot).isRead); }, 4, Other, "0"},
        {[] { return std::to_string(ReadLeftovers(kRoot).isRead); }, 4, NotFound, "1"},
        {MakeAside, 1, NotFound, "f-2.setaside", 9},
        {MakeAside, 1, NotFound, "set-aside file /ev/f-1.setaside cannot be written: all names are taken",
         10},
        {MakeAside, 8, Other,
         "set-aside file /ev/f-2.setaside cannot be written: its name could not be flushed"},
        {Tell, 0, None, ""},
        {Tell, 7, Other, log + "the log's folder cannot be flushed to disk"},
        {Tell, 8, Other, log + "failure 1"},
        {[] { return BringIn("RUVO JOURNAL 2\r\n"); }, 0, None,
         "Journal /ev/x.journal was written by another version, or is not a journal." + left + "."},
        {[] { return BringIn(); }, 1, Other,
         "Folder /ev cannot be read. Events of earlier visits may wait in its journals" + again},
        {[] { return BringIn(); }, 2, Other, unread},
        {[] { return BringIn(); }, 8, Other, unread},
    };
    for (const auto& row : cases) {
        Start();
        for (std::size_t n = 0; n < row.count; ++n)
            g_disk.faults.push_back({row.failing + 6 * n, row.failing + 6 * n, row.failure});
        EXPECT_EQ(row.step(), row.want) << "at operation " << row.failing;
    }
}

TEST(StepFaults, WhatIsLeftIsToldWithWhetherAllOfItWasSeen) {
    Start();
    EXPECT_EQ(LookAt("RUVO JOURNAL 2\r\n"), "1 1");
    for (std::size_t failing = 1; failing <= 6; ++failing) { // each listing and each read
        Start();
        g_disk.faults = {{failing, failing, EFileFailure::Other}};
        EXPECT_EQ(LookAt(), "0 0") << failing;
    }
}

TEST(StepFaults, WhatIsNotFlushedIsNotSafe) {
    const std::vector<std::uint8_t> image(std::size_t{64} * 1024, 'r'); // a piece by itself
    for (const std::size_t made : {1U, 2U})                             // folders
        for (const char how : {'n', 'l', 'c'}) // now, the root's names later, by a cut behind a failure
            for (std::size_t nth = 0; nth <= 6; ++nth) {
                Start();
                const std::string root = made == 1 ? "ev" : "new", path = "C:\\" + root + "\\CD34\\f.evt";
                const std::string shown = "/" + root + "/CD34/f.evt";
                CHeldDayFile file;
                ASSERT_FALSE(file.Hold(path));
                file.StartAt(0, {});
                file.Add(image);
                Break(how == 'c' ? 2 : nth);
                std::string why;
                try {
                    how == 'c' ? file.Add(image)
                               : file.Finish(how == 'l' ? ERootNames::FlushedLater : ERootNames::FlushedNow);
                } catch (const CFileException& raised) {
                    why = raised.what();
                }
                const std::size_t first = how == 'c' ? 2 : 1; // before it a cut asks for the length
                const bool fails = nth >= first && nth <= first + (how == 'l' && made == 1 ? 1 : made + 1);
                EXPECT_EQ(why, how == 'c' || nth == 1 ? shown + ": failure 1"
                               : fails ? "The name of day file " + shown + " could not be flushed"
                                       : "");
                g_disk.faults.clear();
                Break(how == 'c' ? nth : 0);
                EXPECT_TRUE(file.CutBack() && file.StoredCount() == 1 && file.HasFlushFailed() == fails)
                    << made << how << nth;
                g_disk.EndMachine([](std::size_t) { return std::size_t{0}; });
                EXPECT_TRUE(fails || g_disk.Files()[path].size() > image.size()) << made << how << nth;
            }
}

TEST(StepFaults, ASetAsideFileThatCannotBeMadeIsTold) {
    bool isTold = false, isReached = true;
    for (std::size_t nth = 1; isReached; ++nth) {
        Start();
        g_disk.PutFolder("C:\\var\\state");
        std::string reason;
        CRunLedger ledger(kRoot, [&](const SLedgerReport& report) { reason = report.reason; });
        CVisitCustody custody(&ledger, "RV001");
        ASSERT_FALSE(custody.Begin(kNew));
        EXPECT_TRUE(custody.Keep(kImage, 1));
        Break(nth);
        custody.SetAside("a password was refused");
        isReached = g_disk.operations >= g_disk.faults.front().first;
        g_disk.faults.clear();
        const bool isMade = std::ranges::any_of(
            g_disk.Files(), [](const auto& file) { return file.first.ends_with("new-1.setaside"); });
        isTold = isTold || (!isMade && reason.ends_with("/new-1.setaside cannot be written: failure 1"));
        EXPECT_TRUE(custody.SetAsideCount() == 1 || custody.WaitingCount() == 1) << nth;
    }
    EXPECT_TRUE(isTold);
}

/// A line that tells of a loss survives the machine; for others nobody waits.
TEST(StepFaults, LinesAreFlushedIfTheyTellOfALoss) {
    for (const auto& [count, isLoss] : {std::pair(&SExtractionReport::eventsLost, true),
                                        {&SExtractionReport::eventsPassedOver, true},
                                        {&SExtractionReport::recordsUnflushed, true},
                                        {&SExtractionReport::eventsWaiting, false}}) {
        Start();
        SExtractionReport report;
        report.*count = 1;
        report.end = EVisitEnd::LimitReached;
        LogVisit(report);
        EXPECT_NE(g_disk.Files().at(kLog), "x");
        EXPECT_EQ(g_disk.Files("C:", true).at(kLog) != "x", isLoss);
    }
}

// On this disk no file can be made that is there for the proof of a folder alone.
TEST(StepFaults, AProofBeginsAgainThreeTimesWhereItIsDisturbed) {
    using enum EFileFailure;
    for (const auto& [failure, attempts, isGiven] :
         {std::tuple(BadPath, 1U, true), {Exists, 3U, true}, {NotFound, 4U, false}, {DiskFull, 1U, false}}) {
        Start();
        for (std::size_t attempt = 1; attempt <= attempts; ++attempt)
            Break(3 * attempt, failure); // of each attempt the operation that makes the file
        EXPECT_EQ(CanCreateFile("C:\\ev\\f"), isGiven) << attempts;
    }
    for (const auto& [locked, operations] : {std::pair("", 8U), {"C:\\ev", 1U}}) {
        Start();
        g_disk.locked = locked;
        EXPECT_FALSE(CanWriteInFolder("C:\\ev"));
        EXPECT_EQ(g_disk.operations, operations) << "what is refused would be refused again";
    }
}

TEST(StepFaults, WhatAnotherMakesAtTheSameMomentIsThere) {
    Start();
    Break(1, EFileFailure::NotFound);
    EXPECT_TRUE(MakeDirectory("C:\\ev"));
    Start();
    Break(2, EFileFailure::NotFound); // so it was missing
    Break(9);                         // the flush
    EXPECT_TRUE(CHeldDayFile().Hold(kDay)) << "what another has written into it may be lost";
    Start();
    CHeldDayFile file;
    ASSERT_TRUE(MakeFolder("C:\\ev\\CD34").Good() && !file.Hold("C:\\ev\\CD34\\f"));
    file.StartAt(0, {});
    file.Add(kImage);
    file.Finish();
    g_disk.EndMachine([](std::size_t) { return std::size_t{0}; });
    EXPECT_TRUE(g_disk.Files().contains("C:\\ev\\CD34\\f")) << "with the name of its folder";
}

TEST(StepFaults, AWriteThatHasStoredNothingLeavesNothingToFlush) {
    for (const bool isLengthKnown : {true, false}) {
        Start();
        CHeldDayFile file;
        ASSERT_FALSE(file.Hold(kDay));
        file.StartAt(1, {});
        file.Add(kImage);
        Break(2, EFileFailure::DiskFull);
        for (std::size_t nth = isLengthKnown ? 4 : 3; nth < 20; ++nth)
            Break(nth);
        EXPECT_THROW(file.Finish(), CFileException);
        EXPECT_EQ(file.CutBack(), isLengthKnown) << "else part of it may be there";
        EXPECT_FALSE(file.HasFlushFailed());
    }
}

TEST(StepFaults, ImagesNeedNoMemory) {
    Start();
    CHeldDayFile file;
    ASSERT_FALSE(file.Hold(kDay));
    file.StartAt(1, {});
    const CFailingMemory counted(0);
    for (int images = 0; images < 5000; ++images)
        file.Add(kImage);
    EXPECT_EQ(CFailingMemory::Count(), 0U);
}

} // namespace ruvo::test
