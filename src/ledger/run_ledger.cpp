#include "ledger/run_ledger.h"

#include "ledger/entry_recovery.h"
#include "ledger/journal_copy.h"
#include "ledger/root_folder.h"
#include "paths/path_utilities.h"
#include "platform/clock.h"
#include "platform/full_path.h"
#include "platform/standard_error.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

namespace ruvo {

namespace {

/// A journal in which nothing is open is cut from this length on: the room that it has reserved serves the
/// next visits until then, and a cut has to wait for the disk.
constexpr std::uint64_t kLongestIdle = std::uint64_t{1024} * 1024;

std::string Now() {
    const SCalendarTime now = UtcTime();
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d%02d%02dZ", now.year, now.month, now.day,
                  now.hour, now.minute, now.second);
    return text.data();
}

/// Any of the folders that lead to the journals may have been made by a run just now.
bool FlushNamesAbove(std::string folder) {
    bool isGood = true;
    for (std::size_t end = folder.rfind('\\'); end != std::string::npos; end = folder.rfind('\\')) {
        folder.erase(end);
        isGood = FlushFolder(folder) && isGood;
    }
    return isGood;
}

constexpr std::string_view kConsequence = "until a visit ends, an end of the run would cost its events";

std::string CauseText(SFileResult failure) {
    return failure.Good() ? std::string() : ": " + SystemErrorText(failure.systemCode);
}

} // namespace

CRunLedger::CRunLedger(std::string eventRoot, LedgerListener tell)
    : m_eventRoot(std::move(eventRoot)), m_tell([this, once = std::move(tell)](const SLedgerReport& report) {
          if (m_told.insert(report).second) {
              once(report);
          }
      }) {}

/// What is open stays for the next run, which has to know what is done.
CRunLedger::~CRunLedger() {
    CloseAll();
    try {
        if (m_journal && m_openFiles.empty() && !m_journal->HasFailed()) {
            m_journal->Remove();
        } else if (m_journal && (!m_journal->Flush() || m_journal->HasFailed())) {
            PutFailedAway();
        }
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): the next run finds what is open in it
    }
}

/// To find it means to resolve every link on both ways.
const std::string& CRunLedger::Folder() {
    if (m_folder.empty()) {
        m_folder = FolderOfJournals(m_eventRoot);
    }
    return m_folder;
}

CJournalFile* CRunLedger::Journal() {
    if (m_journal && m_journal->HasFailed()) {
        PutFailedAway();
    }
    if (!m_journal && m_triesLeft > 0) {
        --m_triesLeft;
        MakeJournal();
    }
    if (m_journal && !m_areNamesFlushed) { // any folder above the day files may have been made by a run
        m_areNamesFlushed = FlushNamesAbove(m_eventRoot);
    }
    return m_journal.get();
}

/// It is not used any more, and kept while something is open in it.
void CRunLedger::PutFailedAway() {
    const SFileResult failure = m_journal->Failure();
    WriteStandardError("ruvo: journal " + DisplayPath(m_journal->Path()) + " has failed" +
                       CauseText(failure) +
                       (m_triesLeft > 0 ? "" : "; no other is made: " + std::string(kConsequence)));
    if (m_openFiles.empty()) {
        m_journal->Remove();
    } else {
        m_failed.push_back(std::move(m_journal));
        m_waitingFiles.insert(m_waitingFiles.end(), m_openFiles.begin(), m_openFiles.end());
        m_openFiles.clear();
    }
    m_journal.reset();
    m_unclosed.clear();
    m_visits = 0;
}

void CRunLedger::MakeJournal() {
    const std::string& folder = Folder();
    auto journal = std::make_unique<CJournalFile>();
    if (PrepareRootFolder(folder, m_eventRoot) && FlushNamesAbove(folder) && journal->Make(folder, Now())) {
        m_journal = std::move(journal);
        return;
    }
    m_triesLeft = 0;
    WriteStandardError("ruvo: no journal can be made in " +
                       (folder.empty() ? "the state folder" : DisplayPath(folder)) +
                       CauseText(journal->Failure()) + "; " + std::string(kConsequence));
}

std::string CRunLedger::BelowRoot(const std::string& path) const {
    const std::string begin = m_eventRoot + "\\";
    return path.starts_with(begin) ? path.substr(begin.size()) : std::string();
}

void CRunLedger::NoteClosed(const std::string& path) {
    const auto open = std::ranges::find(m_openFiles, path);
    if (open != m_openFiles.end()) {
        m_openFiles.erase(open);
    }
    if (m_openFiles.empty() && m_journal->End() > kLongestIdle) {
        m_journal->Clear();
    }
}

void CRunLedger::CloseWhatIsDue() noexcept {
    constexpr std::size_t kEnough = 16;
    constexpr std::chrono::seconds kLongest{1};
    const bool isDue =
        m_unclosed.size() >= kEnough ||
        (!m_unclosed.empty() && std::chrono::steady_clock::now() - m_unclosed.front().begun >= kLongest);
    if (isDue) {
        CloseAll();
    }
}

/// What cannot be closed stays open for the next run.
void CRunLedger::CloseAll() noexcept {
    const std::vector<SUnclosed> entries = std::exchange(m_unclosed, {});
    try {
        const bool areNamesFlushed = entries.empty() || FlushFolder(m_eventRoot);
        for (const SUnclosed& entry : entries) {
            SChain chain = entry.chain;
            if (!areNamesFlushed) {
                Tell(entry.waits);
            } else if (m_journal->Append(EFrame::Done, entry.visit, chain, {})) {
                NoteClosed(entry.waits.path);
            }
        }
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch): no memory; the next run closes them
    }
}

std::string CRunLedger::FolderForSetAside() {
    return PrepareRootFolder(Folder(), m_eventRoot) ? Folder() : std::string();
}

void CRunLedger::BringIn() {
    BringInFrom(Folder());
}

/// All but its own, which may have the name that an earlier one had.
std::vector<std::string> CRunLedger::EarlierJournals(const std::string& folder) const {
    SListedFiles journals = JournalsIn(folder);
    if (!journals.isRead) {
        SLedgerReport report;
        report.outcome = ELedgerOutcome::UnreadFolder;
        report.path = folder;
        m_tell(report);
    }
    if (m_journal) {
        std::erase(journals.paths, m_journal->Path());
    }
    LeaveOutCopiesBesideTheirJournal(journals.paths);
    return std::move(journals.paths);
}

void CRunLedger::BringInFrom(const std::string& folder) {
    for (const std::string& path : EarlierJournals(folder)) {
        static_cast<void>(CEntryRecovery(m_eventRoot, m_tell).BringIn(path, nullptr));
    }
    RemoveEmptySetAsideFiles(folder);
}

bool CRunLedger::BringInto(CHeldDayFile& file) {
    if (std::ranges::any_of(m_unclosed,
                            [&](const SUnclosed& entry) { return entry.waits.path == file.Path(); })) {
        CloseAll(); // an earlier visit to this file is over
    }
    const auto isIn = [&](const std::vector<std::string>& files) {
        return std::ranges::find(files, file.Path()) != files.end();
    };
    bool isFree = !isIn(m_openFiles) && !isIn(m_waitingFiles);
    for (const std::string& path : EarlierJournals(Folder())) {
        isFree = CEntryRecovery(m_eventRoot, m_tell).BringIn(path, &file) && isFree;
    }
    return isFree;
}

} // namespace ruvo
