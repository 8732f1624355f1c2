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

/// The free text of a day file's header.
inline constexpr const char* kEventListText = "headerText";

/// What had to be left out of a record so that it could be written; `what` names event time and item.
using RecordNotes = std::vector<std::string>;

/// Appends the list's records to the file that the list is named after; a file that is new or empty gets the
/// event-list header first. True when everything is on the disk. On failure a CFileError is in `errors`, and
/// the file ends with the last record that was written whole, or as it did before. A record that has no
/// binary form is written without the item that keeps it back, and `notes` says so.
bool WriteEventFile(CEventList& list, const std::string& freeText, CErrorList& errors, RecordNotes& notes);

/// Appends one record's image; one that has no binary form loses what keeps it back.
void SerialiseRecord(CEventRecord& record, std::vector<std::uint8_t>& bytes, RecordNotes& notes);

/// The unique id of the last extended record, 0 when there is none.
std::uint32_t LastExtendedNumber(const CEventList& list);
/// The record's, 0 when it is not extended.
std::uint32_t ExtendedNumber(const CEventRecord& record);

/// Adds the failure of a day file to the list.
void AddFileError(CErrorList& errors, const CFileException& failure);
/// What people are told when a failed write could not be taken back.
std::string TornNote(const CHeldDayFile& file);

} // namespace ruvo
