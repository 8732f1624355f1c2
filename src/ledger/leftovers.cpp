#include "ledger/leftovers.h"

#include "dayfile/day_file_reader.h"
#include "ledger/journal_entry.h"
#include "ledger/journal_file.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ruvo {

namespace {

/// Of a run that lasts, whose journal one system does not let others hold.
bool IsInUse(const std::string& path, SFileResult opened) {
    CFile journal;
    return opened.failure == EFileFailure::SharingViolation &&
           journal.Open(path, {.read = true, .removable = true}).Good() && journal.IsLocked().value_or(false);
}

/// It may be cut, or go, while it is read: then its run, or a later one, has brought in what was there.
void AddWaiting(const std::string& path, SLeftovers& leftovers) {
    CJournalFile journal;
    const SFileResult opened = journal.OpenToRead(path);
    if (!opened.Good()) {
        leftovers.isRead = leftovers.isRead && (IsAbsent(path) || IsInUse(path, opened));
        return;
    }
    if (journal.File().IsLocked().value_or(false)) {
        return;
    }
    const EJournalHead head = journal.Head();
    if (head == EJournalHead::Unknown) {
        leftovers.damaged.push_back(path);
        return;
    }
    SJournalContents contents = ReadJournal(journal.File());
    leftovers.isRead = leftovers.isRead && head == EJournalHead::Known && contents.isRead;
    for (SJournalEntry& entry : contents.entries) {
        if (!entry.isDone && entry.records > 0 && !entry.IsDropped()) {
            leftovers.waiting.push_back({path, std::move(entry.info), entry.records});
        }
    }
    if (!contents.isWhole && contents.isRead) {
        leftovers.damaged.push_back(path);
    }
}

void AddSetAside(const std::string& path, SLeftovers& leftovers) {
    CDayFileReader reader;
    const SFileResult opened = reader.Open(path, {.read = true, .plain = true});
    if (!opened.Good()) {
        leftovers.isRead = leftovers.isRead && opened.failure == EFileFailure::NotFound;
        return;
    }
    SSetAsideFile file{path, ReadSetAsideHeader(path), 0, true};
    for (SDayFileItem item; reader.Next(item);) {
        file.events += item.record != nullptr ? 1 : 0;
        file.isSound = file.isSound && !item.damage;
    }
    if (file.events > 0 || !file.isSound) { // else it was ended before its first byte
        leftovers.setAside.push_back(std::move(file));
    }
}

} // namespace

SLeftovers ReadLeftovers(const std::string& folder) {
    SLeftovers leftovers;
    leftovers.folder = folder;
    const SListedFiles journals = JournalsIn(folder), setAside = SetAsideFilesIn(folder);
    SListedFiles damaged = ListFiles(folder, kDamagedEnding);
    leftovers.isRead = journals.isRead && setAside.isRead && damaged.isRead;
    for (const std::string& path : journals.paths) {
        AddWaiting(path, leftovers);
    }
    for (const std::string& path : setAside.paths) {
        AddSetAside(path, leftovers);
    }
    std::ranges::move(damaged.paths, std::back_inserter(leftovers.damaged));
    return leftovers;
}

} // namespace ruvo
