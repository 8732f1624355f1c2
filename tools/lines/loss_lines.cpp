// Lines about events that are lost, or may be, and about damaged files.
#include "tools/lines/line_table.h"

namespace ruvo {

namespace {

using enum EConcern;
using enum ESeverity;

constexpr std::array kLines{
    SLineWords{
        Loss, Critical, "<1 event|{N} events> taken from the relay, but not stored.",
        "The relay has handed these events over and deleted them, and they are in no file. Other lines of the "
        "same visit say why: a reply that made no sense, a record that could not be read, a day file that "
        "could not be written while there was no journal.",
        "So many events are lost here.",
        "Read them at the relay, as far as it still shows them, and write them down. Then remove the cause; "
        "\"ruvoctl check SITE.ini\" says whether runs have a journal."},
    SLineWords{
        Loss, Critical,
        "<1 event|{N} events> taken from the relay, but not stored. Visit of {KEY}, begun {TIME}, which was "
        "ended; day file {FILE}. Cause: {CAUSE}.",
        "A run that was killed had noted these events as lost, and this run says so in its place.",
        "So many events are lost here.",
        "Read them at the relay, as far as it still shows them. Lines of the log at TIME (UTC) may say more."},
    SLineWords{
        Loss, Critical,
        "<1 event|{N} events> of unknown kind passed over. Visit of {KEY}, begun {TIME}, which was ended; day "
        "file {FILE}.",
        "A run that was killed had passed over these events, and this run says so in its place.",
        "So many events are lost here.",
        "As for the same line of a visit that was not ended: read such events with the relay's own software."},
    SLineWords{
        Loss, Critical, "<1 event|{N} events> of unknown kind passed over.",
        "The relay handed over events of a kind that this program does not know, and deleted them. Day files "
        "cannot hold them.",
        "So many events are lost here.",
        "Is the relay's firmware new? Read its events with its own software from now on, and report the "
        "relay's model and firmware."},
    SLineWords{
        Loss, Critical, "Extracting event records  {STATUS}.",
        "The record that belongs to an event (a fault record, for instance) could not be read; STATUS says on "
        "what. The visit ended there.",
        "This event is lost if a line about events that were not stored follows; the relay may still show "
        "its record.",
        "Read the record at the relay. If it happens again, \"ruvoctl test SITE.ini KEY\"."},
    SLineWords{
        Loss, Warning,
        "<Event record of {TIME} is|{N} event records, the first of {TIME}, are> written without {ITEMS}, "
        "which cannot be stored.",
        "The relay delivered values or cells that are too long for a day file. The event itself is there, with "
        "all that fits.",
        "These items are lost, for these events.",
        "If they matter, read them at the relay. TIME is by the relay's clock."},
    SLineWords{
        Loss, Warning,
        "<1 further event record is|{N} further event records are> written without items that cannot be "
        "stored.",
        "More of the same kind as the lines before, with other items.", "These items are lost.",
        "See the lines before."},
    SLineWords{
        Loss, Critical,
        "{FILE} could not be truncated to its earlier {N} bytes; it may end with a torn record.",
        "Writing the day file failed, and so did taking back what had been written in part.",
        "Its earlier records are whole. If the last record is torn, the relay keeps its events until that is "
        "repaired: by the next run from the journal, or else at the next UTC day.",
        "\"ruvoctl events FILE\" shows whether the file is damaged. Look at its disk with {room} and {disk "
        "errors}, then visit again."},
    SLineWords{
        Loss, Warning,
        "Day file {FILE} could not be flushed to disk. It holds <1 event|{N} events> of this visit, which "
        "a power failure may still lose.",
        "The events are written, but the disk did not confirm that it has them.",
        "Nothing yet. A power failure in the next minutes may lose them.",
        "Copy the day file to another disk, then look at this one with {disk errors} and {disk check}."},
    SLineWords{
        Loss, Warning,
        "Failed to save event file Day file {FILE} does not end with a whole record: damage at byte {N}; "
        "no event was taken from the relay.",
        "The file was cut, or a run was stopped while it wrote and its journal is missing. Nothing is written "
        "behind a torn record, since nobody could find its end.",
        "The relay keeps its events, until the next UTC day or until you move the file. The record that is "
        "torn is lost; those before it are readable.",
        "To visit at once, move FILE to another folder below the event root. \"ruvoctl events FILE\" shows "
        "what is in it."},
    SLineWords{
        Loss, Warning,
        "Failed to save event file Day file {FILE} cannot be read to its end; no event was taken from the "
        "relay.",
        "The disk reported an error while the file was read, so nobody knows how it ends. Nothing is written "
        "behind an end that is not known.",
        "The relay keeps its events, until the file can be read or the next UTC day.",
        "Copy the day file to another disk, then look at this one with {disk errors} and {disk check}."},
    SLineWords{
        Loss, Critical,
        "Journal {JOURNAL} is damaged. Its readable events are recovered from a copy; it is kept as {KEPT}.",
        "The journal of an ended run was not whole, after a power failure for example.",
        "What could be read is in the day files. After a power failure the rest are events of the visit's last "
        "second; these are lost.",
        "Compare the day file with what the relay still shows. Remove KEPT when nobody needs it any more."},
};

} // namespace

std::span<const SLineWords> LinesOfLoss() {
    return kLines;
}

} // namespace ruvo
