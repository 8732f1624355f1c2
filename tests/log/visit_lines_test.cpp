// What an extraction and the ledger report, as lines of the error log.
#include "log/ledger_lines.h"
#include "log/log_fixture.h"
#include "log/visit_lines.h"

#include "model/status/status.h"
#include "platform/full_path.h"
#include "platform/native_text.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace ruvo {

/// The texts below are those of a POSIX system; another one has paths and a narrow encoding of its own.
std::string OfThisSystem(std::string text) {
    const std::pair<std::string, std::string> parts[] = {{"/ev/d/f.evt", DisplayPath("C:\\ev\\d\\f.evt")},
                                                         {"/ev", DisplayPath("C:\\ev")},
                                                         {"/p", DisplayPath("C:\\p")},
                                                         {"/j", DisplayPath("C:\\j")},
                                                         {"\xC3\xA9", NativeRelayText("\xE9")}};
    for (const auto& [posix, here] : parts)
        for (std::size_t at = 0; (at = text.find(posix, at)) != std::string::npos; at += here.size())
            text.replace(at, posix.size(), here);
    return text;
}

class VisitLines : public CErrorLog {
protected:
    VisitLines() { UseLog(m_folder.Path("run.log")); }

    /// Without the time stamps and the details of the connection, each ended by "|".
    std::string Lines() const {
        static const std::string kEnd = " Connection details - modem name: , device address: -1.\r\n";
        m_folder.Write("run.log", "");
        LogVisit(report);
        std::string lines;
        const std::string log = m_folder.Read("run.log");
        for (std::size_t at = 0, end = 0; at < log.size(); at = end + kEnd.size()) {
            end = log.find(kEnd, at);
            lines += log.substr(at + 20, end - at - 20) + "|";
        }
        return lines;
    }
    /// As many records that lack the items, all of the same time.
    void AddIncomplete(int records, const std::string& item, std::size_t items = 1) {
        const CParlaneIEC870 time(CParlaneIEC870::Octets{0x45, 0x23, 7, 13, 16, 2, 26});
        const CSimpleEventRecord record(0, 0, std::uint8_t{5}, time, "Trip", nullptr, "", "", "",
                                        std::uint16_t{1}, "", CParlaneDataList());
        for (; records > 0; --records)
            report.incomplete.Add(record, SDroppedItems{items, item});
    }

    void Refuse(ERefusal cause, const char* subject) { report.refusal = {cause, subject}; }
    void End(EVisitEnd what, std::size_t taken) {
        report.end = what;
        report.eventsTaken = taken;
    }

    struct SCase {
        const char* name;
        std::function<void()> set;
        std::string said;
    };
    void ExpectLines(const std::vector<SCase>& cases) {
        for (const SCase& test : cases) {
            report = SExtractionReport();
            report.dayFile = "C:\\ev\\d\\f.evt";
            test.set();
            EXPECT_EQ(Lines(), OfThisSystem(test.said)) << test.name;
        }
    }

    SExtractionReport report;
};

TEST_F(VisitLines, WhyNoEventWasTaken) {
    ExpectLines({
        {"nothing", [] {}, ""},
        {"an unfit name", [&] { Refuse(ERefusal::UnfitName, "a\xE9"); },
         "Failed to save event file The relay's model or serial number is unfit for a file name: a\xC3\xA9; no event "
         "was taken from the relay.|"},
        {"a full disk", [&] { Refuse(ERefusal::DiskFull, "C:\\ev"); },
         "Failed to save event file The disk of /ev is full; no event was taken from the relay.|"},
        {"no more files", [&] { Refuse(ERefusal::NoMoreFiles, "C:\\ev"); },
         "Failed to save event file The disk of /ev can take no more files; no event was taken from the relay.|"},
        {"a file not held", [&] { Refuse(ERefusal::FileNotHeld, "It is a link"); },
         "Failed to save event file It is a link; no event was taken from the relay.|"},
    });
}

TEST_F(VisitLines, HowAVisitEnded) {
    ExpectLines({
        {"a record column, and a limit",
         [&] {
             CheckStatus(CStatus(0x0211), 0, 222, 526, kNoErrorCode, report.columnErrors);
             End(EVisitEnd::LimitReached, 1);
         },
         "Extracting event records  Cell data not available.|"
         "This visit has taken 1 event; the rest waits in the relay for the next run.|"},
        {"a full journal", [&] { End(EVisitEnd::JournalFull, 2); },
         "This visit has taken 2 events; there is no room for more in the journal, and the rest waits in the relay "
         "for the next run.|"},
        {"a journal on a bad disk", [&] { End(EVisitEnd::JournalFailed, 1); },
         "This visit has taken 1 event; its journal cannot be written any more, and the rest waits in the relay "
         "for the next run.|"},
        {"a failed write",
         [&] {
             End(EVisitEnd::DiskFull, 3);
             report.failedWrite = CFileException(EFileCause::DiskFull, "C:\\x", "No room.");
             report.tornAfter = 7;
             report.eventsWaiting = 2;
             report.eventsLost = 1;
         },
         "Failed to save event file No room.|"
         "This visit has taken 3 events; there is no room for more in the disk of /ev/d/f.evt, and the rest waits in "
         "the relay for the next run.|"
         "/ev/d/f.evt could not be truncated to its earlier 7 bytes; it may end with a torn record.|"
         "2 events wait in the journal for the next run.|1 event taken from the relay, but not stored.|"},
        {"no more files", [&] { End(EVisitEnd::NoMoreFiles, 2); },
         "This visit has taken 2 events; the disk of /ev/d/f.evt can take no more files, and the rest waits in the "
         "relay for the next run.|"},
        {"a failed flush", [&] { report.recordsUnflushed = 1; },
         "Day file /ev/d/f.evt could not be flushed to disk. It holds 1 event of this visit, which a power failure "
         "may still lose.|"},
    });
}

TEST_F(VisitLines, WhatRecordsLack) {
    ExpectLines({
        {"the day file",
         [&] {
             report.isNameUnread = true;
             report.eventsWaiting = report.eventsPassedOver = 1;
         },
         "The relay's model or serial number could not be read. Its events are in /ev/d/f.evt.|"
         "1 event waits in the journal for the next run.|1 event of unknown kind passed over.|"},
        {"records that lack something",
         [&] {
             AddIncomplete(1, "cell \xE9");
             AddIncomplete(10'000, "value 260", 41);
             AddIncomplete(1, "cell \xE9", 2);
         },
         "Event record of 2026-02-16 13:07:09.029 is written without cell \xC3\xA9, which cannot be stored.|"
         "10000 event records, the first of 2026-02-16 13:07:09.029, are written without value 260 and 40 more, "
         "which cannot be stored.|"
         "Event record of 2026-02-16 13:07:09.029 is written without cell \xC3\xA9 and 1 more, which cannot be "
         "stored.|"},
    });
}

TEST_F(VisitLines, AreBoundedWhateverTheRelayLacks) {
    for (int kind = 0; kind < 1000; ++kind)
        AddIncomplete(2, "cell " + std::to_string(kind));
    const std::string lines = Lines();
    EXPECT_EQ(std::ranges::count(lines, '|'), 17);
    EXPECT_TRUE(
        lines.ends_with("|1968 further event records are written without items that cannot be stored.|"));
    report = SExtractionReport();
    for (int kind = 0; kind < 17; ++kind)
        AddIncomplete(1, "cell " + std::to_string(kind));
    EXPECT_TRUE(
        Lines().ends_with("|1 further event record is written without items that cannot be stored.|"));
}

TEST(LedgerText, SaysWhatBecameOfEvents) {
    using enum ELedgerOutcome;
    const struct {
        ELedgerOutcome outcome;
        std::size_t events;
        const char* text;
    } cases[] = {
        {UnknownJournal, 0,
         "Journal /p was written by another version, or is not a journal. It is left unchanged."},
        {DamagedJournal, 0,
         "Journal /p is damaged. Its readable events are recovered from a copy; it is kept as /p.damaged."},
        {UnreadJournal, 0, "Journal /p cannot be read. It is left unchanged; the next run tries again."},
        {UnreadFolder, 0,
         "Folder /p cannot be read. Events of earlier visits may wait in its journals; the next run tries again."},
        {Stored, 1, "1 event of a visit that was ended is in day file /p now. Visit of K, begun B."},
        {StoredAtEnd, 2,
         "2 events of a visit that was ended are in day file /p now. Visit of K, begun B. The file had changed "
         "since then; the missing events are at its end."},
        {Waits, 1, "1 event waits in journal /j for day file /p: why."},
        {Waits, 2, "2 events wait in journal /j for day file /p: why."},
        {Lost, 1,
         "1 event taken from the relay, but not stored. Visit of K, begun B, which was ended; day file /p. "
         "Cause: why."},
        {PassedOver, 2,
         "2 events of unknown kind passed over. Visit of K, begun B, which was ended; day file /p."},
        {SetAside, 2,
         "2 events set aside in /p: why. Visit of K, begun B. \"ruvoctl recover\" stores them in the day file."},
        {NotSetAside, 0, "Visit of K: why."},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(LedgerText({test.outcome, test.events, "C:\\p", "C:\\j", "K", "B", "why"}),
                  OfThisSystem(test.text));
    }
}

} // namespace ruvo
