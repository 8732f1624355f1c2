// What a run remembers beyond its own end: the journal of the events that it has taken, from which the day
// files are written, and by which the next run completes what an ended one began.
#pragma once

#include "dayfile/held_day_file.h"
#include "ledger/journal_file.h"
#include "ledger/ledger_report.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <set>
#include <string>

namespace ruvo {

/// The journals of one event root. Used by the thread of the run.
class CRunLedger {
public:
    /// It must outlive the visits. Nothing is made before the first visit that takes events.
    CRunLedger(std::string eventRoot, LedgerListener tell);
    CRunLedger(const CRunLedger&) = delete;
    CRunLedger& operator=(const CRunLedger&) = delete;
    /// Removes the journal unless something is open in it.
    ~CRunLedger();

    void Tell(const SLedgerReport& report) const { m_tell(report); }
    /// Brings in what ended runs have left, as far as their day files can be had.
    void BringIn();
    /// The same from the folder of another event root, which is gone.
    void BringInFrom(const std::string& folder);
    /// The same for one day file, which is held. False when an entry for it still waits.
    [[nodiscard]] bool BringInto(CHeldDayFile& file);

    /// This run's journal, made at the first call, and anew after one that has failed; standard error names
    /// that one. Null where none can be made, which standard error says, too.
    [[nodiscard]] CJournalFile* Journal();
    /// The folder for set-aside files; empty where it cannot be had.
    [[nodiscard]] std::string FolderForSetAside();
    /// The path below the event root; empty when it does not lead there.
    [[nodiscard]] std::string BelowRoot(const std::string& path) const;
    [[nodiscard]] std::uint32_t NextVisit() { return ++m_visits; }
    /// An entry for this day file is begun; unless it is closed it waits for the next run.
    void NoteOpen(const std::string& path) { m_openFiles.push_back(path); }
    void NoteClosed(const std::string& path);

    /// A visit's entry that lacks only its last frame, and the flush of the event root's names before that.
    struct SUnclosed {
        std::uint32_t visit = 0;
        SChain chain;
        std::chrono::steady_clock::time_point begun;
        SLedgerReport waits; ///< what is reported when it cannot be closed
    };
    /// Takes it over: where visits are short, one flush serves several. Meanwhile the next run finds the
    /// events where they are, in the day file.
    void CloseLater(SUnclosed entry) { m_unclosed.push_back(std::move(entry)); }
    /// At the end of each visit: closes them when they are enough, or the first of them was begun a second
    /// ago. So a visit that takes its time is closed at its own end.
    void CloseWhatIsDue() noexcept;
    void CloseAll() noexcept;

private:
    [[nodiscard]] std::vector<std::string> EarlierJournals(const std::string& folder) const;
    [[nodiscard]] const std::string& Folder();
    void PutFailedAway();
    void MakeJournal();

    std::string m_eventRoot;
    std::string m_folder;           ///< of its journals, once it is known
    std::set<SLedgerReport> m_told; ///< a run says each thing once
    LedgerListener m_tell;
    std::unique_ptr<CJournalFile> m_journal;
    int m_triesLeft = 3; ///< to make one
    bool m_areNamesFlushed = false;
    std::uint32_t m_visits = 0;
    std::vector<std::string> m_openFiles; ///< of the journal's open entries, the last one last
    std::vector<SUnclosed> m_unclosed;    ///< some of those
    /// Those with open entries, which stay for the next run, and the files of these.
    std::vector<std::unique_ptr<CJournalFile>> m_failed;
    std::vector<std::string> m_waitingFiles;
};

} // namespace ruvo
