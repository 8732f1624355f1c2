// From an event list to its day file.
#pragma once

#include "dayfile/held_day_file.h"
#include "dayfile/incomplete_records.h"
#include "model/records/event_record.h"
#include "model/status/errors.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ruvo {

/// Message of a CFileError about a day file: "Failed to save event file".
inline constexpr unsigned kSaveFailedMessage = 246;

/// The free text of a day file's header.
inline constexpr const char* kEventListText = "headerText";

/// What people should know of a day file that was written, beside a failure.
struct SWritingNotes {
    CIncompleteRecords incomplete;
    /// The file's earlier length, where a failed write could not be taken back: a torn record may follow.
    std::optional<std::uint64_t> tornAfter;
};

/// Appends the list's records to the file that the list is named after; a file that is new or empty gets the
/// event-list header first. True when everything is on the disk. On failure a CFileError is in `errors`, and
/// the file ends with the last record that was written whole, or as it did before. A record that has no
/// binary form is written without the item that keeps it back, and `notes` says so.
bool WriteEventFile(CEventList& list, const std::string& freeText, CErrorList& errors, SWritingNotes& notes);

/// Appends one record's image; one that has no binary form loses what keeps it back, and is counted.
void SerialiseRecord(CEventRecord& record, std::vector<std::uint8_t>& bytes, CIncompleteRecords& incomplete);

/// The unique id of the last extended record, 0 when there is none.
std::uint32_t LastExtendedNumber(const CEventList& list);
/// The record's, 0 when it is not extended.
std::uint32_t ExtendedNumber(const CEventRecord& record);

} // namespace ruvo
