// Brings the entries of an ended run's journal into their day files. Nothing in a journal is believed.
#pragma once

#include "dayfile/held_day_file.h"
#include "ledger/run_ledger.h"

#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// The journals in an event root's folder, the oldest first.
[[nodiscard]] std::vector<std::string> JournalsIn(const std::string& folder);

class CEntryRecovery {
public:
    CEntryRecovery(const std::string& eventRoot, const TellLine& tell)
        : m_eventRoot(eventRoot), m_tell(tell) {}

    /// Brings in what is open in the journal: all of it, or what goes into the file that is held. The journal
    /// goes when nothing is open in it any more and all of it could be read. False when an entry for the held
    /// file stays open.
    [[nodiscard]] bool BringIn(const std::string& journalPath, CHeldDayFile* held);

private:
    struct SEntry;
    struct SPlan;
    [[nodiscard]] std::vector<SEntry> ReadEntries(bool& isWhole);
    [[nodiscard]] bool Settle(SEntry& entry, CHeldDayFile* held);
    [[nodiscard]] bool Store(SEntry& entry, CHeldDayFile& file);
    [[nodiscard]] bool MakePlan(const SEntry& entry, CHeldDayFile& file, SPlan& plan);
    [[nodiscard]] bool FindMissing(const SEntry& entry, const std::string& path, SPlan& plan);
    void TellStored(const SEntry& entry, const std::string& path, bool isElsewhere) const;
    void TellWaits(const SEntry& entry, const std::string& why) const;
    [[nodiscard]] std::string PathOf(const SEntry& entry) const;
    template <class Action>
    [[nodiscard]] bool ForEachImage(const SEntry& entry, Action action);

    const std::string& m_eventRoot;
    const TellLine& m_tell;
    CJournalFile m_journal;
};

} // namespace ruvo
