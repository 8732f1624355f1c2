// The runs of the extractor that every system makes, each with what must come out of it: the error log and
// all day files, byte for byte. Expected bytes are written out by hand.
#pragma once

#include "support/hex.h"

#include <map>
#include <string>
#include <vector>

namespace ruvo::test {

inline constexpr const char* kLink = "[link]\nserial = [\"COM1\"]\nmodems = [\"Acme\"]\n";

inline std::string Relay(const std::string& where, const std::string& more,
                         const std::string& serial = "0001") {
    return "[[relay]]\nname = \"R" + serial + "\"\n" + where + "\n" +
           "[relay.identity]\nmodel = \"AB12-X\"\nserial = \"" + serial +
           "\"\nplant = \"Plant\"\ndescription = \"Desc\"\n" + more;
}

inline const std::string kTrip =
    "[[relay.event]]\nkind = 1\nlocation = \"01.12\"\ntime = 2026-02-16T13:07:09.029\n"
    "text = \"Trip\"\nvalue = { uint = 7, size = 1 }\nformat = \"%d\"\nvalues = [{ int = 5, size = 1 }]\n";

inline std::string Bytes(const std::string& hex) {
    const auto bytes = Hex(hex);
    return {bytes.begin(), bytes.end()};
}

inline std::string Header(const std::string& nextExtended) {
    return "APP: Parlane\r\nTYPE: EventList\r\nFORMAT: 1.0\r\nNEXTEXTENDED: " + nextExtended +
           "\r\n\r\nheaderText\r\n\x1A";
}

/// The block of kTrip from a relay of that device address.
inline std::string Trip(const std::string& address = "05") {
    return Bytes("00 3400 00 00000000 3C07 4523 07 0D 10 02 1A 00 00 01" + address +
                 "05 506C616E74 04 44657363 06 414231322D58 12 01 04 54726970 240107 02 2564 280105");
}

inline const std::string kDay = "AB12-0001/AB12-0001-DATE-DEV.evt";

/// One run: the substation, what must come out of it, and what the INI file holds behind its paths.
struct SCase {
    const char* name;
    std::string substation;
    std::string log{};
    std::map<std::string, std::string> files{{kDay, Header("000001") + Trip()}};
    std::string general{};
    std::string sections = "[RUVO_SERIAL]\nRV001=5\n";
};

inline const std::string kSerialDetails = "Connection details - COM Port: COM1, device address: 5.";
inline const std::string kFailed =
    "Test connection failed. Unable to connect to the device or password is invalid. ";

/// A relay that wants the password AAAA, and the section that has it.
inline const std::string kLocked =
    "[relay.access]\npassword = \"AAAA\"\n[relay.cells]\n\"00.DF\" = { uint = 0, size = 1 }\n";
inline const std::string kPassword = "[RUVO_PASSWORDS]\nRV001=F435048935044256404871\n";

/// What the debugger sees of a run with a login, times masked.
inline const std::string kLoginTrace =
    "     [ PARLANE QTV INFO ] P32Wrap : Security Event : TIME  '                ' [BF.15] "
    "'Setting change          '  dt:0x28  dl:0x02  dv:'0x01 0x00'\n"
    "     [ PARLANE QTV INFO ] P32Wrap : Security Event : TIME  '                ' [BF.15] "
    "'Setting reply code      '  dt:0x24  dl:0x01  dv:'0x06'\n"
    "     [ PARLANE QTV INFO ] CP32Wrap::ChangeSetting calls EnterPassword()\n"
    "     [ PARLANE QTV INFO ] CP32Wrap::ExtractCSVersion : Cyber Security version: 0\n"
    "     [ PARLANE QTV INFO ] P32Wrap : Security Event : TIME  '                ' [BF.15] "
    "'Setting change          '  dt:0x28  dl:0x02  dv:'0x01 0x00'\n"
    "     [ PARLANE QTV INFO ] P32Wrap : Security Event : TIME  '                ' [BF.15] "
    "'Setting reply code      '  dt:0x24  dl:0x01  dv:'0x00'\n"
    "     [ PARLANE QTV INFO ] CP32Wrap::GetEvent calls EnterPassword()\n"
    "     [ PARLANE QTV INFO ] CP32Wrap::ExtractCSVersion : Cyber Security version: 0\n"
    "     [ PARLANE INFO ] WriteHeader START\n"
    "     [ PARLANE INFO ] WriteHeader END\n";

inline const std::string kSecondEventFault =
    "[[fault]]\noperation = \"GetEvent\"\nrelay = \"R0001\"\ncall = 2\n";

inline const std::string kIsLost =
    "A problem occured during events extraction. " + kSerialDetails +
    " P32LS status: Undefined P32LS Error\n1 event taken from the relay, but not stored. " + kSerialDetails +
    "\n";
inline const std::string kPlain = kLink + Relay("serial = 5", kTrip);
inline const std::string kTwice = kLink + Relay("serial = 5", kTrip + kTrip) + kSecondEventFault;
inline const std::string kWithLogin = kLink + Relay("serial = 5", kLocked + kTrip);

inline const std::vector<SCase> kRunCases = {
    {.name = "a serial relay without login", .substation = kPlain},
    {.name = "a relay that is not there does not stop the next",
     .substation = kPlain,
     .log = kFailed + "Connection details - COM Port: COM1, device address: 4.\n",
     .sections = "[RUVO_SERIAL]\nRV000=4\nRV001=5\n"},
    {.name = "a modem relay",
     .substation = kLink + Relay("modem = { number = \"123\", address = 9 }", kTrip),
     .files = {{kDay, Header("000001") + Trip("09")}},
     .general = "UseModem=1\nTAPI_ModemName=Acme\nTAPI_NumberToDial=123\n",
     .sections = "[RUVO_MODEM]\nRV999=9\n"},
    {.name = "an Ethernet relay, and a tunnel that does not open",
     .substation = Relay("ethernet = { ip = \"10.0.0.5\", bus = 1, address = 2 }", kTrip),
     .log = "Failed to open ethernet connection. Connection string: "
            "TNLC=\"RPCDll.Dll\",\"10.0.0.9\",\"0\",\"2\",\"0\". "
            "P32LS status: P32LS Error - cannot open port\n",
     .files = {{kDay, Header("000001") + Trip("02")}},
     .general = "UseEthernet=1\n",
     .sections = "[RUVO_ETHERNET]\nRV001=10.0.0.9,2\nRV002=10.0.0.5,2,1\n"},
    {.name = "a missing password",
     .substation = kWithLogin,
     .log = "Invalid password. " + kSerialDetails + "\n" + kFailed + kSerialDetails + "\n",
     .files = {}},
    {.name = "the right password",
     .substation = kWithLogin,
     .sections = "[RUVO_SERIAL]\nRV001=5\n" + kPassword},
    {.name = "nothing pending", .substation = kLink + Relay("serial = 5", ""), .files = {}},
    {.name = "events end in the middle",
     .substation = kTwice + "status = 8\n",
     .log = "A problem occured during events extraction. " + kSerialDetails +
            " P32LS status: P32LS Error - device is either not connected or not responding\n"},
    {.name = "a reply of the wrong type", .substation = kTwice + "wrong_type = 2\n", .log = kIsLost},
    {.name = "a value with its last byte missing", .substation = kTwice + "truncate = 2\n", .log = kIsLost},
};

} // namespace ruvo::test
