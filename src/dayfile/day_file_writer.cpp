#include "dayfile/day_file_writer.h"

#include "platform/full_path.h"
#include "platform/native_text.h"

#include <algorithm>
#include <cstdio>

namespace ruvo {

namespace {

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

void WriteAll(CHeldDayFile& file, CEventList& list, const std::string& freeText, RecordNotes& notes) {
    file.StartAt(file.LengthNow(), MakeEventListHeader(LastExtendedNumber(list) + 1, freeText));
    std::vector<std::uint8_t> image;
    for (const auto& record : list.GetRecords()) {
        image.clear();
        SerialiseRecord(*record, image, notes);
        file.Add(image);
    }
    file.Finish();
}

} // namespace

void AddFileError(CErrorList& errors, const CFileException& failure) {
    AddError(errors, std::make_unique<CFileError>(failure.GetPath(), static_cast<int>(failure.GetCause()),
                                                  failure.what(), kSaveFailedMessage));
}

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

std::string TornNote(const CHeldDayFile& file) {
    return DisplayPath(file.Path()) + " could not be truncated to its earlier " +
           std::to_string(file.FoundLength()) + " bytes; it may end with a torn record.";
}

bool WriteEventFile(CEventList& list, const std::string& freeText, CErrorList& errors, RecordNotes& notes) {
    CHeldDayFile file;
    if (const auto failure = file.Hold(list.GetName(), EMissingFolders::AreAFailure)) {
        AddError(errors, std::make_unique<CFileError>(list.GetName(), static_cast<int>(failure->cause),
                                                      failure->why, kSaveFailedMessage));
        return false;
    }
    try {
        WriteAll(file, list, freeText, notes);
    } catch (const CFileException& raised) {
        if (!file.CutBack()) {
            notes.push_back(TornNote(file));
        }
        AddFileError(errors, raised);
        return false;
    } catch (...) { // no memory
        file.CutBack();
        throw;
    }
    return true;
}

std::uint32_t LastExtendedNumber(const CEventList& list) {
    const CEventRecordList& records = list.GetRecords();
    const auto last = std::find_if(records.rbegin(), records.rend(),
                                   [](const auto& record) { return ExtendedNumber(*record) != 0; });
    return last == records.rend() ? 0 : ExtendedNumber(**last);
}

std::uint32_t ExtendedNumber(const CEventRecord& record) {
    return dynamic_cast<const CExtendedEventRecord*>(&record) != nullptr ? record.GetUniqueId() : 0;
}

} // namespace ruvo
