#include "dayfile/day_file_writer.h"

#include "dayfile/off_file.h"
#include "paths/path_utilities.h"
#include "platform/full_path.h"
#include "platform/native_text.h"

#include <algorithm>
#include <cstdio>

namespace ruvo {

namespace {

void AddFileError(CErrorList& errors, const CFileException& failure) {
    AddError(errors, std::make_unique<CFileError>(failure.GetPath(), static_cast<int>(failure.GetCause()),
                                                  failure.what(), kSaveFailedMessage));
}

std::string EventTime(const CEventRecord& record) {
    const STimeFields time = record.GetTimeStamp().ToFields();
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03d", time.year, time.month, time.day,
                  time.hour, time.minute, time.second, time.milliseconds);
    return text;
}

SDroppedItems DropUnwritable(CEventRecord& record) {
    if (auto* extended = dynamic_cast<CExtendedEventRecord*>(&record)) {
        return extended->DropUnwritable();
    }
    return dynamic_cast<CSimpleEventRecord&>(record).DropUnwritable();
}

/// Appends the record's image; one that has no binary form loses what keeps it back.
void SerialiseRecord(CEventRecord& record, std::vector<std::uint8_t>& bytes, RecordNotes& notes) {
    try {
        record.Serialise(bytes);
    } catch (const CUnwritableRecord&) {
        const SDroppedItems dropped = DropUnwritable(record);
        notes.push_back("Event record of " + EventTime(record) + " is written without " +
                        NativeRelayText(dropped.first) +
                        (dropped.count > 1 ? " and " + std::to_string(dropped.count - 1) + " more" : "") +
                        ", which cannot be stored.");
        record.Serialise(bytes);
    }
}

std::vector<std::uint8_t> SerialiseRecords(CEventList& list, RecordNotes& notes) {
    std::size_t size = 0;
    for (const auto& record : list.GetRecords()) {
        size += record->GetImageSize();
    }
    std::vector<std::uint8_t> bytes;
    bytes.reserve(size); // growing step by step would copy the images again and again
    for (const auto& record : list.GetRecords()) {
        SerialiseRecord(*record, bytes, notes);
    }
    return bytes;
}

/// Writes into the open file; a failure anywhere is raised.
void WriteContents(COffFile& file, std::uint64_t earlierLength, const CTextFileHeader& header,
                   std::span<const std::uint8_t> images) {
    if (earlierLength != 0) {
        file.Seek(0, ESeekOrigin::End);
    } else {
        file.WriteHeader(header);
    }
    if (!images.empty()) {
        file.WriteBytes(images);
    }
    file.FlushToDisk();
}

/// Takes back a file that an opening made before it failed. It is looked at afresh, since nothing is known of
/// it: one with anything in it stays.
void RemoveIfMade(COffFile& file, const std::string& path, bool wasThere) {
    file.Abort();
    CFile look;
    std::uint64_t length = 0;
    if (!wasThere && look.Open(path, {.read = true, .plain = true}).Good() && look.GetLength(length).Good() &&
        length == 0 && look.Close().Good()) {
        RemovePlainFile(path);
    }
}

/// Takes back what a failed write left: earlier records stay, a file made for nothing goes. The handle may be
/// the very thing that failed, so the file is cut through a fresh one. False when a torn record may remain.
bool UndoWrite(COffFile& file, const std::string& path, std::uint64_t earlierLength) {
    file.Abort();
    if (earlierLength == 0) {
        return file.Remove();
    }
    CFile cut;
    return cut.Open(path, {.read = true, .write = true, .plain = true}).Good() &&
           cut.SetLength(earlierLength).Good() && cut.FlushToDisk().Good();
}

} // namespace

bool WriteEventFile(CEventList& list, const std::string& freeText, CErrorList& errors, RecordNotes& notes) {
    const std::vector<std::uint8_t> images = SerialiseRecords(list, notes);
    COffFile file;
    CFileException failure;
    const SPathParts parts = SplitPath(list.GetName());
    const std::string folder = parts.drive + parts.folder;
    const bool wasThere = GetPathKind(list.GetName()) != EPathKind::Missing;
    if (!file.Open(list.GetName(), {.read = true, .write = true, .create = true, .truncate = false},
                   failure)) {
        RemoveIfMade(file, list.GetName(), wasThere);
        AddFileError(errors, failure);
        return false;
    }
    std::uint64_t earlierLength = 0;
    try {
        earlierLength = file.GetLength();
    } catch (const CFileException& raised) {
        RemoveIfMade(file, list.GetName(), wasThere);
        AddFileError(errors, raised);
        return false;
    }
    const auto undo = [&] {
        if (!UndoWrite(file, list.GetName(), earlierLength)) {
            notes.push_back(DisplayPath(list.GetName()) + " could not be cut back to its earlier " +
                            std::to_string(earlierLength) + " bytes; it may end with a torn record.");
        }
    };
    try {
        WriteContents(file, earlierLength, MakeEventListHeader(LastExtendedNumber(list) + 1, freeText),
                      images);
        if (earlierLength == 0) {
            FlushFolder(folder);
        }
        file.Close(); // last: what fails from here on would have records that are there counted as lost
    } catch (const CFileException& raised) {
        undo();
        AddFileError(errors, raised);
        return false;
    } catch (...) { // no memory: the caller counts the records as lost
        undo();
        throw;
    }
    return true;
}

std::uint32_t LastExtendedNumber(const CEventList& list) {
    const auto isExtended = [](const auto& record) {
        return dynamic_cast<const CExtendedEventRecord*>(record.get()) != nullptr;
    };
    const CEventRecordList& records = list.GetRecords();
    const auto last = std::find_if(records.rbegin(), records.rend(), isExtended);
    return last == records.rend() ? 0 : (*last)->GetUniqueId();
}

} // namespace ruvo
