// From an event list to its day file.
#pragma once

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
/// event-list header first. True when everything is on the disk. On failure a CFileError is in `errors`, a
/// file that held bytes before is as long as it was, and one that did not is gone. A record that has no
/// binary form is written without the item that keeps it back, and `notes` says so.
bool WriteEventFile(CEventList& list, const std::string& freeText, CErrorList& errors, RecordNotes& notes);

/// The unique id of the last extended record, 0 when there is none.
std::uint32_t LastExtendedNumber(const CEventList& list);

} // namespace ruvo
