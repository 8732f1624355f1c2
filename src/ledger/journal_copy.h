// A copy of what is open in a journal that could not be read to its end. Nothing is added to such a journal:
// it would be written over what could not be read.
#pragma once

#include "ledger/journal_entry.h"

#include <string>
#include <vector>

namespace ruvo {

/// The name of a journal's copy.
[[nodiscard]] std::string CopyPathOf(const std::string& journalPath);
/// A copy is brought in after the journal that it was made of has been put away: gone before, it would be
/// made, and brought in, once more.
void LeaveOutCopiesBesideTheirJournal(std::vector<std::string>& journals);
/// Makes it, unless it is there, and returns when it is on the disk. The journal is locked meanwhile, so that
/// no other run makes the same one.
[[nodiscard]] SFileResult CopyOpenEntries(const std::string& journalPath, CFile& journal,
                                          const SJournalContents& contents);

} // namespace ruvo
