// What an extraction reports to its caller, as values. The log puts them into words.
#pragma once

#include "dayfile/incomplete_records.h"
#include "dayfile/off_file.h"
#include "link/seam/link_status.h"
#include "model/status/errors.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace ruvo {

/// Why no event was taken from a relay that has some.
enum class ERefusal : std::uint8_t {
    UnfitName,   ///< the relay's names lead out of its own folder, or to no file
    DiskFull,    ///< that of the event root
    NoMoreFiles, ///< likewise
    FileNotHeld, ///< the day file, for the reason that is given
};
struct SRefusal {
    ERefusal cause = ERefusal::UnfitName;
    std::string subject; ///< the folder's name as the relay gave it, the event root, or the reason in words

    bool operator==(const SRefusal&) const = default;
};

/// What has left further events in the relay.
enum class EVisitEnd : std::uint8_t {
    NoMoreEvents,
    LimitReached,
    JournalFull,
    JournalFailed, ///< for another reason than room
    DiskFull,
    NoMoreFiles, ///< on the day file's disk
};

/// However many events a relay has, its report is no larger than this and a few texts.
struct SExtractionReport {
    std::size_t recordsWritten = 0;
    std::size_t recordsUnflushed = 0; ///< of those; an end of the machine may take them
    std::size_t eventsTaken = 0;      ///< from the relay, in all
    std::size_t eventsLost = 0;       ///< taken from the relay, but nowhere any more
    std::size_t eventsWaiting = 0;    ///< in the journal, from which the next run stores them
    std::size_t eventsSetAside = 0;   ///< in a file of their own, which the log names
    std::size_t eventsPassedOver = 0; ///< taken from the relay, and of an unknown kind
    bool passwordDeclined = false;    ///< the visit ended because a password was not accepted
    bool isUnvisited = false;         ///< the run was to end before the first event
    LinkStatus endStatus = kLinkGood; ///< what ended the visit early; good when nothing did

    std::string name;    ///< of the relay's folder; empty unless the relay gave model and serial number
    std::string plant;   ///< both in code page 1252, as the relay gave them
    std::string dayFile; ///< its path
    std::optional<SRefusal> refusal;
    CErrorList columnErrors; ///< of record columns: one at most, since the visit ends with it
    std::optional<CFileException> failedWrite;
    EVisitEnd end = EVisitEnd::NoMoreEvents;
    std::optional<std::uint64_t> tornAfter; ///< the day file may be, by the failed write
    bool isNameUnread = false; ///< the day file is that of a relay without model or serial number
    CIncompleteRecords incomplete;
};

} // namespace ruvo
