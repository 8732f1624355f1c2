// What the ledger reports, as values. The log puts them into words.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace ruvo {

enum class ELedgerOutcome : std::uint8_t {
    UnknownJournal, ///< a file of another version, or no journal
    DamagedJournal,
    UnreadJournal, ///< a file that the system does not let this run read
    UnreadFolder,  ///< likewise, the one that journals are in
    Stored,        ///< in the day file
    StoredAtEnd,   ///< of a day file that had changed since the visit
    Waits,         ///< for the day file
    Lost,          ///< by a run that was killed before it could say so
    PassedOver,    ///< likewise: of unknown kind
    SetAside,
    NotSetAside, ///< since the set-aside file could not be written
};

/// One outcome, for a journal or for the events of one visit.
struct SLedgerReport {
    ELedgerOutcome outcome = ELedgerOutcome::Stored;
    std::size_t events = 0;
    std::string path;    ///< of the journal or its folder, the day file or the set-aside file
    std::string journal; ///< where events wait
    std::string key;     ///< of the visited relay in the INI file
    std::string begun;
    std::string reason; ///< in words, as set-aside files and journals keep it
    std::uint64_t from =
        0; ///< what was written into the day file: the first byte, and the one after the last
    std::uint64_t to = 0;

    [[nodiscard]] bool IsStored() const {
        return outcome == ELedgerOutcome::Stored || outcome == ELedgerOutcome::StoredAtEnd;
    }

    auto operator<=>(const SLedgerReport&) const =
        default; // NOLINT(modernize-use-nullptr): the 0 is the compiler's
};

/// Takes one report into the log and returns when it is on the disk.
using LedgerListener = std::function<void(const SLedgerReport& report)>;

} // namespace ruvo
