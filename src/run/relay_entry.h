// What a run's record says of one relay, gathered while it is being visited.
#pragma once

#include "config/ini_keys.h"
#include "ledger/visit_entry.h"
#include "link/seam/link_status.h"

#include <cstdint>
#include <string>

namespace ruvo {

class CHeldDayFile;
class CVisitRecord;
struct SExtractionReport;
struct SLedgerReport;

/// Made before the relay's first request. Nothing here fails: what there is no memory for is left out.
class CRelayEntry {
public:
    /// Without a record nothing is gathered.
    CRelayEntry(CVisitRecord* record, const std::string& key, const std::string& address,
                ELink link) noexcept;

    /// What became of its events; `ended` is the status that ended the visit early.
    void Note(const SExtractionReport& report, LinkStatus ended, const CHeldDayFile& file) noexcept;
    /// Puts the entry into the record.
    void Add() noexcept;
    /// The same of a relay to which the link could not be opened, and the lines that the log has about that.
    void AddUnreached(LinkStatus failure, std::uint64_t logLines) noexcept;

private:
    template <class Action>
    void Gather(Action action) noexcept;
    void SetStatus(LinkStatus status);

    CVisitRecord* m_record;
    SVisitEntry m_entry;
    std::uint64_t m_linesBefore = 0; ///< of the log
    bool m_isRead = false;           ///< the login is over
};

/// Adds events of an earlier run that this one has stored; other reports are passed over.
void NoteRecovered(CVisitRecord* record, const SLedgerReport& report) noexcept;

} // namespace ruvo
