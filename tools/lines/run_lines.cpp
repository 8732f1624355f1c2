// Lines about the run, its links and its logins.
#include "log/run_texts.h"
#include "tools/lines/line_table.h"

namespace ruvo {

namespace {

using enum EConcern;
using enum ESeverity;

constexpr std::string_view kNotVisited =
    "The relay was not visited. Nothing is lost: it keeps its events for the next run.";
constexpr std::string_view kNoneVisited =
    "No relay behind this link was visited. Nothing is lost: they keep their events for the next run.";
constexpr std::string_view kRefusedCost =
    "The relay keeps its further events. If some had been read, another line names the file in which they "
    "are set aside.";

constexpr std::array kLines{
    SLineWords{
        Run, Warning, kAlreadyRunning,
        "Another run of ruvo was at work when this one began. This one ended at once.",
        "Nothing. This start visited no relay, and the other run went on.",
        "A single line means that two starts overlapped. The same line night after night means that a run "
        "hangs: {running} shows its age. End it with {end it}; the next run stores what it had read."},
    SLineWords{
        Run, Warning, "Run ended by {SIGNAL}; <1 relay|{N} relays> not visited.",
        "A person, the time limit of the {scheduler}, a log-off or a shutdown asked the run to end.",
        "Nothing is lost: these relays keep their events. Events that had been read are stored, or wait in "
        "the journal for the next run.",
        "Visit again: {visit now}. If nobody ended the run by hand, {who ended it}."},
    SLineWords{
        Run, Critical, "Unhandled exception occured:{TEXT}",
        "The program met an error for which it has no line of its own, such as a lack of memory; TEXT is the "
        "system's word for it. With connection details the visit of that relay ended, and the run went on; "
        "without, the run may have ended.",
        "Events that had been read are stored or wait in the journal, unless another line counts them as "
        "lost. The rest waits in the relays.",
        "\"ruvoctl status SITE.ini\" shows which relays were reached. Look at memory and disk with {memory} "
        "and {room}, then visit again. If the line returns, report it as a fault of the program."},
    SLineWords{
        Run, Critical, "Fatal exception occured:{TEXT}",
        "A file that the run as a whole needs failed; TEXT names it. The run ended.",
        "Relays that were not visited yet keep their events. Events that had been read wait in the journal.",
        "Look at the file in the line, its disk and its permissions, then visit again."},

    SLineWords{
        Link, Warning, "Failed to open COM port. Port: {PORT}, connection parameters: {PARAMETERS}.",
        "The comms server could not open the serial port. The run ended, since every relay is behind it.",
        kNoneVisited,
        "Is CommPort the port's name in the comms server, and does no other program use the port? Then try "
        "\"ruvoctl test SITE.ini KEY\" with one relay."},
    SLineWords{
        Link, Warning, "Modem connect failed. Modem name: {MODEM}, number to dial: {NUMBER}.",
        "The call to the substation did not come about. The run ended, since every relay is behind it.",
        kNoneVisited,
        "Dial the number from a telephone: a modem must answer. Then try \"ruvoctl test SITE.ini KEY\"."},
    SLineWords{
        Link, Warning, "Failed to open ethernet connection. Connection string: {CONNECTION}.",
        "The link to this relay could not be opened.", kNotVisited,
        "\"ping\" the address in the line. If it answers, try \"ruvoctl test SITE.ini KEY\"; if it does not, "
        "look for the relay's supply, its cable and the switch."},
    SLineWords{
        Link, Warning, kTransactionValuesFailed,
        "The link was open, but the comms server did not take the timing values of the INI file (BusyHoldoff "
        "to GlobalTransmit). The link was closed again.",
        kNoneVisited,
        "Were these values changed? \"ruvoctl check SITE.ini\" finds one out of range; the manual of the comms "
        "server says what it takes. Then try \"ruvoctl test SITE.ini KEY\"."},
    SLineWords{Link, Warning, "There were problems with setting transaction values. {PLACE}.",
               "Says which link the line before is about.", kNoneVisited, "See the line before."},
    SLineWords{
        Link, Notice, kHangUpFailed, "The visits were over, but the comms server could not end the call.",
        "No event. The line may stay open, which costs money and keeps the next call from coming about.",
        "Look whether the modem has hung up, and switch it off and on if it has not."},
    SLineWords{Link, Notice, kClosePortFailed,
               "The visit was over, but the comms server could not close its port or tunnel.",
               "No event. The next attempt to open the same link may fail.",
               "Nothing if the next visit reaches the relay. Otherwise restart the comms server."},
    SLineWords{
        Link, Warning, "Test connection failed. Unable to connect to the device or password is invalid.",
        "Before any event is read, the run reads a cell of the relay and logs in. Either the relay did not "
        "answer, or it refused the login. A line about the password just before this one decides: without "
        "such a line it is the connection.",
        kNotVisited,
        "\"ruvoctl test SITE.ini KEY\" distinguishes the two. Run it once: if it is the password, each try "
        "costs one of the relay's attempts."},
    SLineWords{
        Link, Warning, "A problem occured during events extraction.",
        "The relay answered at first, but its visit ended early; the status says how.",
        "The relay keeps its further events. Those read before are stored, or other lines say where they are: "
        "waiting, set aside, or lost.",
        "Nothing if the next visit is good. Otherwise \"ruvoctl test SITE.ini KEY\"."},

    SLineWords{
        Password, Warning, kInvalidPassword,
        "The relay rejected what was written to its password cell. That is not always a wrong password: if "
        "the INI file has none for this key, or a longer one than the relay takes, or the relay did not say "
        "how long its password is, the run writes blanks. A relay may also reject it for its own reasons, "
        "such as somebody at its front panel.",
        kRefusedCost,
        "\"ruvoctl list SITE.ini\" shows whether a password is stored for the key. If there is one, try it at "
        "the relay. Store the right one (\"ruvoctl password set SITE.ini KEY\"), then \"ruvoctl test SITE.ini "
        "KEY\", once."},
    SLineWords{
        Password, Warning, kInvalidUserPassword,
        "The relay, one that enciphers passwords and counts refusals, refused the password. If the INI "
        "file has none for this key, or a longer one than the relay takes, the run sends blanks.",
        "The relay keeps its further events. Each visit costs one of its attempts; after the last, it blocks "
        "the password. Events read before are set aside, and another line names their file.",
        "Act before the next visit. \"ruvoctl list SITE.ini\" shows whether a password is stored for the key. "
        "Store the right one (\"ruvoctl password set SITE.ini KEY\"), then \"ruvoctl test SITE.ini KEY\", "
        "once."},
    SLineWords{
        Password, Warning, kInsufficientLevel,
        "The relay accepted the password, and asked for one again at the same request: the password's level "
        "does not give access to the events.",
        kRefusedCost,
        "Store a password of a higher level (\"ruvoctl password set SITE.ini KEY\"), then \"ruvoctl test "
        "SITE.ini KEY\"."},
    SLineWords{
        Password, Critical, kBlockedTemporarily,
        "After too many wrong passwords the relay accepts none for a while, not even the right one.",
        kRefusedCost,
        "Do not try again now. Stop the visits of this relay, find out who enters a wrong password, correct "
        "it in the INI file, wait for the relay's blocking time, then \"ruvoctl test SITE.ini KEY\", once."},
    SLineWords{
        Password, Critical, kBlockedPermanently,
        "The relay has blocked its password and states no time after which it accepts one again.",
        kRefusedCost,
        "Waiting does not help: unblock the password at the relay. First correct it in the INI file, or the "
        "next visit blocks it again."},
    SLineWords{
        Password, Warning, kUnknownPasswordError,
        "The password was sent, and the answer was neither an acceptance nor a refusal that the program "
        "knows. The line was lost during the login, or the relay refuses logins for another reason. From a "
        "relay with a plain password, that is every answer but a rejection.",
        kRefusedCost,
        "\"ruvoctl test SITE.ini KEY\", once. If it fails too, look at the relay itself: does it accept this "
        "password there?"},
    SLineWords{
        Password, Warning, "Unrecognized error code passed to password callback. Error code: {CODE}.",
        "The login ended with a result that this program does not know.", kRefusedCost,
        "\"ruvoctl test SITE.ini KEY\", once. If the line returns, report it as a fault of the program."},
};

} // namespace

std::span<const SLineWords> LinesOfRun() {
    return kLines;
}

} // namespace ruvo
