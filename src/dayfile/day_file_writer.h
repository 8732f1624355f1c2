// From an event list to its day file.
#pragma once

#include "dayfile/held_day_file.h"
#include "model/records/event_record.h"
#include "model/status/errors.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ruvo {

/// Message of a CFileError about a day file: "Failed to save event file".
inline constexpr unsigned kSaveFailedMessage = 246;

/// What had to be left out of a record so that it could be written; `what` names event time and item.
using RecordNotes = std::vector<std::string>;

/// Appends the list's records to the file that the list is named after; a file that is new or empty gets the
/// event-list header first. True when everything is on the disk. On failure a CFileError is in `errors`, and
/// the file ends with the last record that was written whole, or as it did before. A record that has no
/// binary form is written without the item that keeps it back, and `notes` says so.
bool WriteEventFile(CEventList& list, const std::string& freeText, CErrorList& errors, RecordNotes& notes);

/// The same with a file that is held already, and its end in it.
bool WriteRecords(CHeldDayFile& file, CEventRecordList& records, const std::string& freeText,
                  CErrorList& errors, RecordNotes& notes);

/// The unique id of the last extended record, 0 when there is none.
std::uint32_t LastExtendedNumber(const CEventList& list);
std::uint32_t LastExtendedNumber(const CEventRecordList& records);

} // namespace ruvo
