#include "dayfile/day_file_writer.h"

#include <algorithm>

namespace ruvo {

namespace {

SDroppedItems DropUnwritable(CEventRecord& record) {
    if (auto* extended = dynamic_cast<CExtendedEventRecord*>(&record)) {
        return extended->DropUnwritable();
    }
    return dynamic_cast<CSimpleEventRecord&>(record).DropUnwritable();
}

void AddFileError(CErrorList& errors, const std::string& path, EFileCause cause, const std::string& why) {
    AddError(errors, std::make_unique<CFileError>(path, static_cast<int>(cause), why, kSaveFailedMessage));
}

void WriteAll(CHeldDayFile& file, CEventList& list, const std::string& freeText,
              CIncompleteRecords& incomplete) {
    file.StartAt(file.LengthNow(), MakeEventListHeader(LastExtendedNumber(list) + 1, freeText));
    std::vector<std::uint8_t> image;
    for (const auto& record : list.GetRecords()) {
        image.clear();
        SerialiseRecord(*record, image, incomplete);
        file.Add(image);
    }
    file.Finish();
}

} // namespace

void SerialiseRecord(CEventRecord& record, std::vector<std::uint8_t>& bytes, CIncompleteRecords& incomplete) {
    try {
        record.Serialise(bytes);
    } catch (const CUnwritableRecord&) {
        SDroppedItems dropped = DropUnwritable(record);
        record.Serialise(bytes);
        incomplete.Add(record, std::move(dropped));
    }
}

bool WriteEventFile(CEventList& list, const std::string& freeText, CErrorList& errors, SWritingNotes& notes) {
    CHeldDayFile file;
    if (const auto failure = file.Hold(list.GetName(), EMissingFolders::AreAFailure)) {
        AddFileError(errors, list.GetName(), failure->cause, failure->why);
        return false;
    }
    try {
        WriteAll(file, list, freeText, notes.incomplete);
    } catch (const CFileException& raised) {
        if (!file.CutBack()) {
            notes.tornAfter = file.FoundLength();
        }
        AddFileError(errors, raised.GetPath(), raised.GetCause(), raised.what());
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
