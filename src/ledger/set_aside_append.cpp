#include "ledger/set_aside_append.h"

#include "dayfile/day_file_reader.h"
#include "dayfile/day_file_writer.h"
#include "ledger/journal_entry.h"
#include "ledger/set_aside_file.h"
#include "ledger/visit_custody.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"

#include <algorithm>

namespace ruvo {

namespace {

std::string NameOf(const std::string& path) {
    return path.substr(path.rfind('\\') + 1);
}

/// Takes the records into the journal.
std::string KeepRecords(const std::string& path, CVisitCustody& custody, SAppendedFile& appended) {
    CDayFileReader reader;
    if (!reader.Open(path, {.read = true, .plain = true}).Good()) {
        return "it cannot be read";
    }
    for (SDayFileItem item; reader.Next(item);) {
        if (item.IsReadFailure()) { // what follows may be sound, and nobody would read it any more
            return "it cannot be read";
        }
        if (item.damage && !appended.damageAt) {
            appended.damageAt = item.damage->offset;
        }
        if (item.record != nullptr &&
            (!custody.HasRoom() || !custody.Keep(item.bytes, ExtendedNumber(*item.record)))) {
            return "there is no room for the journal";
        }
    }
    return custody.KeptCount() == 0 ? "it holds no record" : "";
}

std::string Append(const std::string& path, CVisitCustody& custody, SAppendedFile& appended) {
    std::string failure = KeepRecords(path, custody, appended);
    if (!failure.empty()) {
        return failure; // without a store frame the entry is dropped
    }
    if (!custody.AnnounceStore()) { // a later run would drop the entry, and the records would come once more
        return "its journal cannot be written; nothing has been stored";
    }
    try {
        custody.Store();
    } catch (const CFileException& raised) {
        return std::string(raised.what()) + "; its events wait in the journal for the next run";
    }
    appended.events = custody.StoredCount();
    appended.from = custody.File().WrittenFrom();
    appended.to = custody.File().WrittenTo();
    return MarkAppended(ParentFolder(path), NameOf(path))
               ? ""
               : "its events are in the day file, but it cannot be marked; the next run tries again";
}

/// Whether an entry that is still open may name the file: then its writing may go on.
bool IsNamedByJournal(const std::string& path) {
    const SListedFiles journals = JournalsIn(ParentFolder(path));
    return !journals.isRead || std::ranges::any_of(journals.paths, [&](const std::string& journal) {
        CJournalFile file;
        if (!file.OpenToRead(journal).Good()) {
            return true;
        }
        const SJournalContents contents = ReadJournal(file.File());
        return !contents.isRead || std::ranges::any_of(contents.entries, [&](const SJournalEntry& entry) {
            return !entry.isDone && ((entry.setAside && entry.setAside->name == NameOf(path)) ||
                                     entry.info.source == NameOf(path));
        });
    });
}

} // namespace

SAppendedFile AppendSetAsideFile(CRunLedger& ledger, const std::string& eventRoot, const std::string& path) {
    SAppendedFile appended;
    const auto header = ReadSetAsideHeader(path);
    if (!header) {
        appended.failure = "it is no set-aside file, or cannot be read";
        return appended;
    }
    appended.key = header->key;
    appended.dayFile = eventRoot + "\\" + header->file;
    CVisitCustody custody(&ledger, header->key);
    custody.NameSource(NameOf(path));
    if (const auto held = custody.Begin(appended.dayFile)) {
        appended.failure = held->why;
        return appended;
    }
    CFile file; // what waited may have been this very file
    const bool isThere =
        file.Open(path, {.read = true, .write = true, .plain = true, .removable = true}).Good();
    if (!isThere || file.TryLock() == EFileLock::HeldByAnother || !file.IsAt(path)) {
        appended.failure = isThere ? "another run works on it" : "it has been appended already";
        custody.End();
        return appended;
    }
    if (!custody.HasJournal()) {
        appended.failure = "no journal can be made";
        return appended;
    }
    appended.failure = Append(path, custody, appended);
    if (appended.failure.empty() || custody.KeptCount() == 0) {
        custody.End();
    }
    return appended;
}

std::string AdoptSetAsideFile(const std::string& path, const std::string& folder) {
    if (IsNamedByJournal(path)) {
        return {};
    }
    const auto header = ReadSetAsideHeader(path);
    std::string moved = FreeSetAsidePath(folder, header ? header->file : NameOf(path));
    if (moved.empty() || !RenameFile(path, moved)) {
        return {};
    }
    if (FlushFolder(folder)) { // in this order it is in one folder at least
        FlushFolder(ParentFolder(path));
    }
    return moved;
}

} // namespace ruvo
