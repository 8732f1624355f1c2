// A substation as its file describes it: plain data, complete and checked. Values are in the form in which
// they cross the seam: a tagged value [type code][length][data] as bytes, empty for no data, Other for a
// wrong type.
#pragma once

#include "link/seam/cell_address.h"
#include "link/seam/link_status.h"
#include "link/seam/operations.h"
#include "link/seam/variant.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ruvo::sim {

/// One cell: `data` holds one or several values of `size` bytes each, back to back.
struct SCell {
    std::uint8_t type = 0;
    std::uint8_t size = 0;
    Variant::Bytes data;
    Variant::List limits;
    Variant::List strings;
    std::optional<Variant> label; ///< the cell's menu text, a tagged text
    bool writable = false;
    bool listed = true;         ///< appears when its column is listed
    std::uint8_t replyCode = 0; ///< not 0: every access is answered with this reply code
};
using CellMap = std::map<CellAddress, SCell>;

/// The result of listing a column.
struct SListing {
    Variant::List locations;
    Variant::List texts;
    Variant::List values;
    Variant::List limits; ///< first limit of each cell, empty where it has none
};

struct SColumn {
    bool unsignedLocations = false;  ///< locations are unsigned values rather than menu locations
    std::optional<SListing> listing; ///< given word by word instead of made from the cells
};

/// One record of a record column: shown in the column's cells while its number is selected.
struct SRecord {
    std::uint8_t column = 0;
    std::uint32_t number = 0;
    CellMap cells;
    std::optional<SListing> listing;
};

struct SEvent {
    std::uint8_t kind = 0;
    Variant::List values;
    std::optional<bool> more; ///< the more-events flag; else whether more events wait
    bool operator==(const SEvent&) const = default;
};

enum class EBlocking : std::uint8_t { Temporary, Permanent };

/// What a login is needed for.
struct SProtection {
    bool events = false;
    bool reads = false;  ///< of cells outside the columns 00, BF and the security column
    bool writes = false; ///< changes and resets, likewise
    std::vector<CellAddress> cells;
};

/// One user of a relay. Name and password are in the code page of the programs, without blanks at their ends.
struct SUser {
    std::string name;
    std::optional<std::string> password; ///< none: no login succeeds under this name
    bool levelTooLow = false;            ///< the right password is accepted, but opens nothing
};

struct SAccess {
    unsigned generation = 0;
    Variant::Bytes password; ///< generations 0 and 1, as the right login writes it: padded, enciphered
    SProtection protection;
    std::uint8_t passwordReply = 0; ///< reply code that asks for a password
    std::uint32_t attempts = 0;     ///< wrong passwords until blocked; 0: never blocked
    EBlocking blocking = EBlocking::Temporary;
    std::uint32_t blockedRequests = 0; ///< length of a temporary blocking, in requests to this relay
    bool levelTooLow = false;          ///< a right password is accepted, but opens nothing
    std::uint32_t forgetAfter = 0;     ///< requests after which the login is forgotten; 0: never
    std::uint8_t securityColumn = 0;   ///< generations 1 and up
    std::vector<SUser> users;          ///< generations 2 and up, as are all below
    bool freshSalt = false;            ///< the salt of the login before is refused
    bool notSettable = false;          ///< the password cell cannot be written
    std::vector<std::string>
        providerFiles; ///< full paths to look for the crypto provider at; none: the usual
};

struct SSerialAddress {
    std::string port; ///< empty: any port of the link
    std::uint8_t address = 0;
    bool operator==(const SSerialAddress&) const = default;
};
struct SModemAddress {
    std::string number;
    std::uint8_t address = 0;
    bool operator==(const SModemAddress&) const = default;
};
struct SEthernetAddress {
    std::string ip;
    int bus = 0;
    std::uint8_t address = 0;
    bool operator==(const SEthernetAddress&) const = default;
};

struct SRelay {
    std::string name;
    std::optional<SSerialAddress> serial;
    std::optional<SModemAddress> modem;
    std::optional<SEthernetAddress> ethernet;
    CellMap cells;
    std::map<std::uint8_t, SColumn> columns;
    std::vector<SRecord> records;
    std::optional<SAccess> access;
    std::vector<SEvent> events;
    bool endless = false;        ///< after the last event the first one waits again
    std::uint8_t statusByte = 0; ///< without the bit that says that events wait
};

struct SSerialPort {
    std::string port;
    std::optional<std::string> parameters; ///< the only parameter text that the port takes
    LinkStatus status = kLinkGood;         ///< answer to opening it
};
/// A telephone number or an IP address, and the status of a call to it.
struct SDestination {
    std::string name;
    LinkStatus status = kLinkGood;
};

struct SLink {
    std::vector<SSerialPort> serial;
    std::vector<std::string> modems; ///< names of the modems at this end
    std::vector<SDestination> numbers;
    std::vector<SDestination> ethernet;
};

/// What goes wrong with some calls of an operation. Calls count from 1 per fault and connection.
struct SFault {
    EOperation operation = EOperation::OpenPort;
    std::string relay; ///< empty: any
    std::optional<CellAddress> cell;
    std::uint64_t firstCall = 1;
    std::uint64_t lastCall = UINT64_MAX;
    std::uint32_t delay = 0; ///< milliseconds
    bool comFailure = false;
    bool hangs = false;                   ///< an operation that runs on never completes until it is aborted
    std::optional<LinkStatus> completion; ///< status with which an operation that runs on completes
    std::optional<LinkStatus> status;
    std::optional<std::uint8_t>
        wrongType;                       ///< the output with this number is of a useless type; 0: the status
    std::optional<std::size_t> truncate; ///< bytes that are left of each byte array of the reply
};

struct SSubstation {
    SLink link;
    std::vector<SRelay> relays;
    std::vector<SFault> faults;
    std::string stateFile;   ///< full path; empty: events are handed over anew in every run
    std::string accountFile; ///< the same, shared by all connections at one time
    std::string traceFile;   ///< full path; empty: no trace
    std::uint32_t speed = 1; ///< how many times faster than it says a delay passes
};

/// A substation, or the one line that says why its file is refused: "FILE:LINE: REASON".
struct SLoadedSubstation {
    std::unique_ptr<SSubstation> substation;
    std::string error;
};

/// Reads a substation from TOML text. `name` names the file in the error; state and trace file names are
/// relative to `folder`.
SLoadedSubstation ReadSubstation(std::string_view text, const std::string& name, const std::string& folder);
/// Reads a substation file.
SLoadedSubstation LoadSubstation(const std::string& path);

} // namespace ruvo::sim
