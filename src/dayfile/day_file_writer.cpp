#include "dayfile/day_file_writer.h"

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

void WriteAll(CHeldDayFile& file, CEventRecordList& records, const std::string& freeText,
              RecordNotes& notes) {
    file.StartAt(file.LengthNow(), MakeEventListHeader(LastExtendedNumber(records) + 1, freeText));
    std::vector<std::uint8_t> image;
    for (const auto& record : records) {
        image.clear();
        SerialiseRecord(*record, image, notes);
        file.Add(image);
    }
    file.Finish();
}

} // namespace

bool WriteRecords(CHeldDayFile& file, CEventRecordList& records, const std::string& freeText,
                  CErrorList& errors, RecordNotes& notes) {
    const auto cutBack = [&] {
        if (!file.CutBack()) {
            notes.push_back(DisplayPath(file.Path()) + " could not be cut back to its earlier " +
                            std::to_string(file.FoundLength()) + " bytes; it may end with a torn record.");
        }
    };
    try {
        WriteAll(file, records, freeText, notes);
    } catch (const CFileException& raised) {
        cutBack();
        AddFileError(errors, raised);
        return false;
    } catch (...) { // no memory: what has an image already needs none
        try {
            file.Finish();
        } catch (const CFileException&) {
            cutBack();
        }
        throw;
    }
    return true;
}

bool WriteEventFile(CEventList& list, const std::string& freeText, CErrorList& errors, RecordNotes& notes) {
    CHeldDayFile file;
    if (const auto failure = file.Hold(list.GetName(), EMissingFolders::AreAFailure)) {
        AddError(errors, std::make_unique<CFileError>(list.GetName(), static_cast<int>(failure->cause),
                                                      failure->why, kSaveFailedMessage));
        return false;
    }
    return WriteRecords(file, list.GetRecords(), freeText, errors, notes);
}

std::uint32_t LastExtendedNumber(const CEventList& list) {
    return LastExtendedNumber(list.GetRecords());
}

std::uint32_t LastExtendedNumber(const CEventRecordList& records) {
    const auto isExtended = [](const auto& record) {
        return dynamic_cast<const CExtendedEventRecord*>(record.get()) != nullptr;
    };
    const auto last = std::find_if(records.rbegin(), records.rend(), isExtended);
    return last == records.rend() ? 0 : (*last)->GetUniqueId();
}

} // namespace ruvo
