// Keeps what one visit has taken from its relay, from the reply until the day file has it: in the run's
// journal, or in memory where there is none. It holds the day file meanwhile.
#pragma once

#include "dayfile/held_day_file.h"
#include "ledger/run_ledger.h"
#include "ledger/set_aside_file.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ruvo {

class CVisitCustody {
public:
    /// Without a ledger everything is kept in memory. The key is the relay's in the INI file.
    explicit CVisitCustody(CRunLedger* ledger = nullptr, std::string key = {})
        : m_ledger(ledger), m_key(std::move(key)) {}

    /// The records come from a set-aside file of that name, not from a relay. Before Begin.
    void NameSource(std::string source) { m_source = std::move(source); }
    /// Holds the day file, brings in what waits for it, and begins an entry: after that events may be taken.
    std::optional<SHoldFailure> Begin(const std::string& path);
    /// Whether the journal has room for one more event of any size.
    [[nodiscard]] bool HasRoom();
    /// Keeps one record. False when the journal has failed: the record is kept, but the visit has to end.
    [[nodiscard]] bool Keep(std::span<const std::uint8_t> image, std::uint32_t extendedNumber);
    /// An event was taken of which no record is made.
    void Lose(ELostCause cause) noexcept;
    /// Says in the journal where the day file will have the records, and returns when that is on the disk. A
    /// visit goes on without it; records that are elsewhere, too, must not be stored without it.
    [[nodiscard]] bool AnnounceStore();
    /// Writes what is kept into the day file; a failure is raised as CFileException, with the file cut back.
    void Store();
    /// Writes what is kept into a set-aside file instead, and its name into the log; what that does not take
    /// waits for the next run, or is lost without a journal.
    void SetAside(const std::string& reason);
    /// Leaves what is kept to the next run. Without a journal, or with one that has failed, as Store.
    void LeaveOpen();
    /// Closes the entry, or leaves that to the ledger, after the log lines about the visit are written, and
    /// releases the day file. What was neither stored nor set aside waits for the next run.
    void End();

    /// Whether what is kept outlasts an end of the process.
    [[nodiscard]] bool HasJournal() const { return IsJournaled(); }
    /// Whether it is for want of room that the journal takes no more.
    [[nodiscard]] bool IsJournalFull() const {
        return m_journal != nullptr && m_journal->Failure().failure == EFileFailure::DiskFull;
    }
    [[nodiscard]] std::size_t KeptCount() const { return m_framedCount + m_ends.size(); }
    /// Events that are in the day file; those that a journal has as well only once they are flushed.
    [[nodiscard]] std::size_t StoredCount() const;
    /// Of those, events that are in no journal and could not be flushed.
    [[nodiscard]] std::size_t UnflushedCount() const { return m_file.HasFlushFailed() ? StoredCount() : 0; }
    /// Events that are in the journal for the next run, and not for certain in the day file.
    [[nodiscard]] std::size_t WaitingCount() const;
    /// Events that are in a set-aside file.
    [[nodiscard]] std::size_t SetAsideCount() const { return m_setAsideCount; }
    [[nodiscard]] const CHeldDayFile& File() const { return m_file; }
    /// After a failed Store: the file may end with a torn record.
    [[nodiscard]] bool MayBeTorn() const { return m_mayBeTorn; }

private:
    [[nodiscard]] bool IsJournaled() const { return m_journal != nullptr && !m_journal->HasFailed(); }
    std::optional<SHoldFailure> BeginEntry(std::uint64_t length);
    [[nodiscard]] bool CopyTo(CSetAsideFile& file, bool takesFramed);
    [[nodiscard]] bool CanReadFramed();
    [[nodiscard]] std::optional<SHoldFailure> RefuseTornFile(std::uint64_t length) const;
    void TellNotSetAside(const CSetAsideFile& file) const;
    bool NameSetAside(const std::string& name, const std::string& reason);
    template <class Add>
    void AddFramed(Add add);
    template <class Add>
    void AddUnframed(Add add);

    CRunLedger* m_ledger;
    std::string m_key;
    std::string m_source;
    std::optional<std::uint64_t> m_storeAt; ///< the day file's length, once it is announced
    CHeldDayFile m_file;
    CJournalFile* m_journal = nullptr; ///< null without one
    std::string m_begun;
    std::chrono::steady_clock::time_point m_begunAt;
    std::uint32_t m_visit = 0;
    std::uint64_t m_entryOffset = 0;
    SChain m_chain;
    std::uint32_t m_framedCount = 0;
    std::uint32_t m_lastExtended = 0;
    std::vector<std::uint8_t> m_images; ///< those that are in no journal
    std::vector<std::size_t> m_ends;
    bool m_isStoring = false; ///< what the file counts from here on is of this visit, and of none before
    bool m_isSettled = false; ///< nothing waits for the next run
    bool m_mayBeTorn = false;
    std::size_t m_setAsideCount = 0;
};

} // namespace ruvo
