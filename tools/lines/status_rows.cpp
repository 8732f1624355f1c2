// The statuses of the comms server.
#include "tools/lines/line_table.h"

#include "log/status_to_string_id.h"
#include "model/status/string_table.h"

#include <array>

namespace ruvo {

namespace {

constexpr std::string_view kTestRelay = "\"ruvoctl test SITE.ini KEY\" tries this relay alone.";
constexpr std::string_view kNoise =
    "Once, it is noise, and the next visit is good. If it returns, look at the line: cable, connectors, "
    "converter, baud rate.";
constexpr std::string_view kGarbled = "A reply of several blocks arrived incomplete or garbled.";
constexpr std::string_view kNotAsked =
    "Nothing that this program asks for ends with this status: the comms server or the relay answers out of "
    "turn.";
constexpr std::string_view kReport = "Restart the comms server. If it returns, report it to its maker.";
constexpr std::string_view kRelayRefused = "The relay does not have, or does not give, what was asked for.";
constexpr std::string_view kRelaySpoke =
    "The relay is reached and speaks. If its firmware is new, compare it with one that works.";
constexpr std::string_view kTelephony = "The telephony of this machine failed; the relay was not involved.";
constexpr std::string_view kModemCheck =
    "Try the modem with another program. If that fails too, install the modem anew, or use another one.";
constexpr std::string_view kDialAgain =
    "Nothing if the next visit is good. Otherwise dial the number from a telephone and listen.";

constexpr std::array kRows{
    SStatusRow{
        kLinkNotResponding, kLinkNotResponding,
        "The relay did not answer: it is switched off, not connected, or has another address.",
        "Is it being worked on? Look at its supply, its cable, and its address against the INI file. Others on "
        "the same line good: it is the relay; all of them silent: it is the line or the port. Then \"ruvoctl "
        "test SITE.ini KEY\"."},
    SStatusRow{
        kLinkAborted, kLinkAborted,
        "Nobody pressed anything: a login that the relay asked for in the middle of the visit was given up. "
        "The relay has user names, which an INI file cannot contain; or it refused the password (a line just "
        "before says so); or what the login has to read (the encryption key, the password's length) could not "
        "be read. The comms server can also have been told to abort.",
        "\"ruvoctl test SITE.ini KEY\" says whether the relay asks for a user name. If so, give access to "
        "events without one in the relay's settings. Events that were read are set aside: \"ruvoctl recover "
        "SITE.ini\"."},
    SStatusRow{kReplyPasswordNeeded, kReplyPasswordNeeded,
               "The relay asked for a password while the login itself was under way.", kTestRelay},
    SStatusRow{
        2, 2, "The relay answered \"busy\" more often than BusyCount allows.",
        "Nothing if the next visit is good. Otherwise raise BusyCount or BusyHoldoff in the INI file."},
    SStatusRow{3, 6, kGarbled, kNoise},
    SStatusRow{
        kLinkBusy, kLinkBusy, "The comms server was still at work for somebody else.",
        "Does another program use the same comms server at the time of the visit? Then move one of the two."},
    SStatusRow{9, 9, "The comms server could not make sense of the relay's reply.", kNoise},
    SStatusRow{
        kLinkWrongParameters, kLinkWrongParameters,
        "The comms server rejected a request of this program as senseless.",
        "Compare the INI file with one that works (\"ruvoctl check SITE.ini\"). If it returns, report it."},
    SStatusRow{
        kLinkCannotOpenPort, kLinkCannotOpenPort,
        "There is no port or tunnel of that name, another program has it, or nothing answers at the IP "
        "address.",
        "Serial: does the port exist, and who holds it? Ethernet: \"ping\" the address in the line; without an "
        "answer look at the relay's supply, the network and the gateway."},
    SStatusRow{kLinkBadPortParameters, kLinkBadPortParameters,
               "The port exists, but does not take baud rate and frame.",
               "Compare BaudRate and ElevenBits with the relays and with what the port can do."},
    SStatusRow{kLinkNothingToClose, kLinkNothingToClose, "The port was closed already.", "Nothing."},
    SStatusRow{kLinkDataNotReady, kLinkDataNotReady, "The comms server had no reply ready when it was due.",
               kReport},
    SStatusRow{
        kLinkNoPortOpen, kLinkNoPortOpen,
        "The port or call was gone in the middle of the visit: the line dropped, or the server was restarted.",
        kTestRelay},
    SStatusRow{16, 16, "A reply arrived with a transmission error.", kNoise},
    SStatusRow{kLinkReply, kLinkReply, "The comms server states a reply of the relay without saying which.",
               kReport},
    SStatusRow{19, 45, kNotAsked, kReport},
    SStatusRow{
        kLinkLineDisconnected, kLinkLineDisconnected, "The modem was still hanging up an earlier call.",
        "Nothing if the next visit is good. Otherwise leave more time between two visits of this modem."},
    SStatusRow{47, 47, kTelephony, kModemCheck},
    SStatusRow{kLinkNoCall, kLinkNoCall, "The call had ended already.", kDialAgain},
    SStatusRow{49, 49, kTelephony, kModemCheck},
    SStatusRow{kLinkNoSuchLine, kLinkNoSuchLine, "There is no such line for this modem.",
               "Compare TAPI_ModemName and TAPI_LineAddress with the modems of this machine."},
    SStatusRow{51, 51, "The line was engaged.", kDialAgain},
    SStatusRow{52, 52, "There is no such line for this modem.",
               "Compare TAPI_ModemName and TAPI_LineAddress with the modems of this machine."},
    SStatusRow{53, 53, kTelephony, kModemCheck},
    SStatusRow{kLinkLineInUse, kLinkLineInUse, "Another program has the modem.",
               "Find it (a fax, a remote access), and give the modem to the visits alone."},
    SStatusRow{56, 59, kTelephony, kModemCheck},
    SStatusRow{
        60, 61, "The number was not dialled, because the telephony does not accept it.",
        "Compare TAPI_NumberToDial, TAPI_AreaCode, TAPI_CountryCode and TAPI_UseCountryAndAreaCodes with the "
        "number that a telephone in this room needs."},
    SStatusRow{kLinkCallTimedOut, kLinkCallTimedOut, "The number was dialled, and no modem answered in time.",
               kDialAgain},
    SStatusRow{69, 69, "The call was up, and then the line dropped.", kDialAgain},
    SStatusRow{70, 71, kTelephony, kModemCheck},
    SStatusRow{250, 250, kNotAsked, kReport},
    SStatusRow{
        kLinkDisobeysProtocol, kLinkDisobeysProtocol,
        "The relay handed over an event that makes no sense: an element is missing, superfluous or of the "
        "wrong type. The visit ended there, and that event is counted as lost.",
        "Read the newest events at the relay. If it happens again with this relay only, report its model and "
        "firmware."},
    SStatusRow{252, 253, kNotAsked, kReport},
    SStatusRow{
        kLinkBadReply, kLinkComFailure,
        "Either the comms server could not be reached any more (status 255), or its reply could not be "
        "unpacked (254); a password that cannot be enciphered ends with 254, too. Another number is one that "
        "only the server's maker knows.",
        "\"ruvoctl status --format json SITE.ini\" shows the number at the relay. 255: is the comms server "
        "running, or has it crashed? 254: \"ruvoctl test SITE.ini KEY\"."},
    SStatusRow{ReplyStatus(1), ReplyStatus(3), kRelayRefused, kRelaySpoke},
    SStatusRow{kReplyRejected, kReplyNotSettable, "The relay rejected what was written to it.", kRelaySpoke},
    SStatusRow{ReplyStatus(7), ReplyStatus(7), "Somebody changed settings at the relay during the visit.",
               "Nothing. Visit again when that person is done."},
    SStatusRow{ReplyStatus(8), ReplyStatus(8), "The relay answered with a code that has no text.",
               kRelaySpoke},
    SStatusRow{kReplyCommandRejected, kReplyCommandRejected, "The relay rejected the request.", kRelaySpoke},
    SStatusRow{ReplyStatus(10), ReplyStatus(255),
               "The relay answered with a code that has no text of its own.", kRelaySpoke},
};

} // namespace

std::span<const SStatusRow> StatusTable() {
    return kRows;
}

std::string_view StatusText(LinkStatus status) {
    return StringTextOrEmpty(StatusToStringId(status));
}

} // namespace ruvo
