// Lines about events that are safe, but not in their day file.
#include "tools/lines/line_table.h"

namespace ruvo {

namespace {

using enum EConcern;
using enum ESeverity;

constexpr std::string_view kKept = "Nothing is lost: the relay keeps its events for the next run.";
constexpr std::string_view kWaits =
    "Nothing is lost: the journal has the events, and each run tries to store them. Until then no command "
    "but \"ruvoctl recover\" shows them.";

constexpr std::array kLines{
    SLineWords{
        Storage, Warning,
        "Failed to save event file The relay's model or serial number is unfit for a file name: {NAME}; no "
        "event was taken from the relay.",
        "Folder and file are named after the relay's model and serial number (cells 00.06 and 00.08), and "
        "these texts cannot name a file.",
        kKept,
        "Read the two cells at the relay and correct them there. It keeps its events until then, as long as "
        "its memory lasts."},
    SLineWords{
        Storage, Critical,
        "Failed to save event file The disk of {FOLDER} is full; no event was taken from the relay.",
        "Less than 64 KB are free on the disk of the event root.", kKept,
        "Make room, then visit again, before the relays' memories are full. To see how much is free: {room "
        "of folder}."},
    SLineWords{
        Storage, Critical,
        "Failed to save event file The disk of {FOLDER} can take no more files; no event was taken from the "
        "relay.",
        "The disk of the event root has room, but no free inode for another file.", kKept,
        "{room for files} shows it. Remove small files that nobody needs, then visit again."},
    SLineWords{
        Storage, Warning,
        "Failed to save event file Day file {FILE} is held by another run; no event was taken from the relay.",
        "Another program visits the same event root at this moment: another user's run, or one on another "
        "host.",
        kKept,
        "Once, it means nothing. Every night, it means that two schedulers visit one event root: stop one "
        "of them."},
    SLineWords{
        Storage, Warning,
        "Failed to save event file Day file {FILE} keeps being replaced; no event was taken from the relay.",
        "Another program put a new file in the place of the day file each time the run had opened it.", kKept,
        "Find the program (a synchronisation, a backup) and keep it from the event root during visits."},
    SLineWords{
        Storage, Warning,
        "Failed to save event file The relay's folder {FOLDER} is a link; no event was taken from the relay.",
        "A run follows no links below the event root, so that nobody can lead its files elsewhere.", kKept,
        "Put a folder in the place of the link, or move the whole event root."},
    SLineWords{Storage, Warning,
               "Failed to save event file Day file {FILE} is a link; no event was taken from the relay.",
               "A run follows no links below the event root, so that nobody can lead its files elsewhere.",
               kKept, "Move the link away. The next visit makes a new day file."},
    SLineWords{
        Storage, Warning,
        "Failed to save event file Day file {FILE} is not a regular file in a folder; no event was taken from "
        "the relay.",
        "Something else has the name of the day file or of the relay's folder.", kKept,
        "{look at it}, and move away what does not belong there."},
    SLineWords{
        Storage, Critical,
        "Failed to save event file No folder can be made in {FOLDER}; no event was taken from the relay.",
        "This user may not create the relay's folder, or the disk does not let it.", kKept,
        "\"ruvoctl check SITE.ini\", as the user of the visits, says what is wrong. Correct {owner and "
        "mode} of the folder."},
    SLineWords{
        Storage, Critical,
        "Failed to save event file No file can be made in {FOLDER}: {REASON}; no event was taken from the "
        "relay.",
        "This user may not create the day file, or the disk does not let it.", kKept,
        "Correct {owner and mode} of the folder, or what REASON says. \"ruvoctl check SITE.ini\", as the "
        "user of the visits."},
    SLineWords{
        Storage, Warning,
        "Failed to save event file Events of an earlier visit still wait for day file {FILE}; no event was "
        "taken from the relay.",
        "Events of an ended run have to be stored in this file first, and could not be.", kKept,
        "Another line of this run says what keeps them waiting. Remove that cause, then visit again."},
    SLineWords{
        Storage, Critical,
        "Failed to save event file There is no room for journal {JOURNAL}; no event was taken from the relay.",
        "The disk of the state folder is full, so that the relay's events could not be kept on the way.",
        kKept, "Make room on the disk of JOURNAL, then visit again. To see how much is free: {room}."},
    SLineWords{
        Storage, Critical, "Failed to save event file {REASON}; no event was taken from the relay.",
        "The day file could not be opened and locked before the first event was read; REASON says why.",
        kKept,
        "Remove the cause, then visit again. \"ruvoctl check SITE.ini\", as the user of the visits, tries the "
        "same folders."},
    SLineWords{
        Storage, Critical, "Failed to save event file {REASON}.",
        "Events had been read, and the day file could not be written. REASON names the file.",
        "The next line says whether the events wait in the journal or are lost.",
        "Look at the disk of the file with {room} and {disk errors}, remove the cause, then visit again."},
    SLineWords{Storage, Notice,
               "This visit has taken <1 event|{N} events>; the rest waits in the relay for the next run.",
               "A visit ends after 1,000,000 events or 256 MB, or since the run was asked to end.", kKept,
               "Visit again. A relay that always has more reports something all the time: look at its events "
               "(\"ruvoctl events FOLDER\")."},
    SLineWords{
        Storage, Critical,
        "This visit has taken <1 event|{N} events>; there is no room for more in the journal, and the rest "
        "waits in the relay for the next run.",
        "The disk of the state folder is full.", kKept,
        "Make room there: \"ruvoctl recover SITE.ini\" names the folder. Then visit again."},
    SLineWords{
        Storage, Critical,
        "This visit has taken <1 event|{N} events>; there is no room for more in the disk of {FILE}, and the "
        "rest waits in the relay for the next run.",
        "The disk of the day file is full.", kKept,
        "Make room, then visit again, before the relay's memory is full. To see how much is free: {room}."},
    SLineWords{
        Storage, Critical,
        "This visit has taken <1 event|{N} events>; its journal cannot be written any more, and the rest "
        "waits in the relay for the next run.",
        "The disk of the state folder has reported an error; the program's standard error names it.", kKept,
        "Look at that disk with {disk errors} and {disk check}: \"ruvoctl recover SITE.ini\" names the "
        "folder. Then visit again."},
    SLineWords{
        Storage, Critical,
        "This visit has taken <1 event|{N} events>; the disk of {FILE} can take no more files, and the "
        "rest waits in the relay for the next run.",
        "The disk of the day file has no inodes left.", kKept,
        "Remove files that nobody needs ({room for files}), then visit again, before the relay's memory is full."},
    SLineWords{Storage, Warning, "<1 event waits|{N} events wait> in the journal for the next run.",
               "The events were read, but the day file could not be written; the line before says why.",
               kWaits, "Remove the cause, then visit again. Do not delete the journal: it is the only copy."},
    SLineWords{
        Storage, Warning,
        "<1 event waits|{N} events wait> in journal {JOURNAL} for day file {FILE}: {REASON}.",
        "An ended run has left events, and this run could not store them either.",
        "Nothing is lost: the journal has the events, and each run tries again. They become a set-aside "
        "file when their visit is a week old and runs on seven different days (UTC) have found them "
        "waiting.",
        "Remove the cause that REASON names, then visit again. Do not delete the journal: it is the only "
        "copy."},
    SLineWords{
        Storage, Notice,
        "<1 event|{N} events> of a visit that was ended <is|are> in day file {FILE} now. Visit of {KEY}, begun "
        "{TIME}.",
        "An earlier run was killed, or its disk was full. This run has stored what that one had read.",
        "Nothing. A killed run can have lost the one event that was just being transferred.",
        "Find out what ended the earlier run: {visits' log} around TIME (UTC)."},
    SLineWords{
        Storage, Warning,
        "<1 event|{N} events> of a visit that was ended <is|are> in day file {FILE} now. Visit of {KEY}, begun "
        "{TIME}. The file had changed since then; the missing events are at its end.",
        "As above, but somebody had moved, cut or appended to the day file in the meantime.",
        "Nothing is lost. If the file was moved away, some events may stand in both files.",
        "Find out who changed the file. Nobody but ruvo should write below the event root."},
    SLineWords{
        Storage, Warning,
        "<1 event|{N} events> set aside in {FILE}: {REASON}. Visit of {KEY}, begun {TIME}. \"ruvoctl recover\" "
        "stores them in the day file.",
        "The relay refused a password in the middle of the visit, the visit was aborted, or the events had "
        "waited for a week. Such events are not written to the day file without a person's word.",
        "Nothing is lost: the set-aside file has the events.",
        "Look at them (\"ruvoctl events FILE\"), then store them: \"ruvoctl recover SITE.ini FILE\", as "
        "the user of the visits."},
    SLineWords{Storage, Warning, "Visit of {KEY}: set-aside file {FILE} cannot be written: {REASON}.",
               "The events of this visit were to be set aside, and their file could not be written.",
               "Other lines of this visit say whether the events wait in the journal or are lost.",
               "Make room, or correct the permissions, in the folder of FILE."},
    SLineWords{
        Storage, Warning,
        "Journal {JOURNAL} was written by another version, or is not a journal. It is left unchanged.",
        "A file in the state folder has the name of a journal, and this version cannot read it.",
        "Events in it are in no day file. They are safe as long as the file is.",
        "After a downgrade: run the newer version once, which stores them. Otherwise keep the file, and find "
        "out who put it there."},
    SLineWords{Storage, Warning,
               "Journal {JOURNAL} cannot be read. It is left unchanged; the next run tries again.",
               "This user may not read it, or its disk reports an error.",
               "Events in it are in no day file. They are safe as long as the file is.",
               "{rights of journal}. For errors of the disk: {disk errors}."},
    SLineWords{
        Storage, Warning,
        "Folder {FOLDER} cannot be read. Events of earlier visits may wait in its journals; the next run "
        "tries again.",
        "The user of the visits may not list this folder below the state folder, or its disk reports an error.",
        "Events in its journals are in no day file. They are safe as long as the journals are.",
        "Give the folder back to the user of the visits. For errors of the disk: {disk errors}."},
    SLineWords{
        Storage, Notice, "The relay's model or serial number could not be read. Its events are in {FILE}.",
        "The relay was slow or the line was bad when its names were read. A part of the folder's name is "
        "missing.",
        "Nothing is lost, but the events are in another folder than usual.",
        "Look for them there. If it happens every night, \"ruvoctl test SITE.ini KEY\"."},
};

} // namespace

std::span<const SLineWords> LinesOfStorage() {
    return kLines;
}

} // namespace ruvo
