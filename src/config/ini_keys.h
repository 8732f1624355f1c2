// The keys of the INI file, each fact about them once. Loading and the rules, the commands that make, check
// and edit INI files, and the page of the documentation go by these tables.
#pragma once

#include "config/result_code.h"
#include "config/ruvo_config.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace ruvo {

inline constexpr std::string_view kGeneralSection = "RUVO_GENERAL";
inline constexpr std::string_view kSerialSection = "RUVO_SERIAL";
inline constexpr std::string_view kModemSection = "RUVO_MODEM";
inline constexpr std::string_view kEthernetSection = "RUVO_ETHERNET";
inline constexpr std::string_view kPasswordsSection = "RUVO_PASSWORDS";

inline constexpr std::string_view kErrorLogName = "RUVO_Errors.log";
inline constexpr std::string_view kBaudRates = "1200|2400|4800|9600|19200|38400|57600|115200";

/// What a value of [RUVO_GENERAL] has to be.
enum class EKeyRule : std::uint8_t {
    AnyText,
    AnyNumber,
    EventRoot, ///< a folder below the drive
    ErrorLog,  ///< a file; check-only mode tries whether it can be written
    ModemName, ///< any but none
    Switch,
    Timing,
    BaudRate,
};

/// Where a rule counts.
enum class ERuleScope : std::uint8_t { EveryLink, SerialAndModem, ModemOnly };

using IntegerField = std::int32_t SRuvoConfigFields::*;
using TextField = std::string SRuvoConfigFields::*;

/// One key of [RUVO_GENERAL].
struct SGeneralKey {
    std::string_view name;
    std::variant<IntegerField, TextField> field;
    std::string_view defaultText; ///< what an absent or empty value means
    EKeyRule rule;
    ERuleScope scope;
    EResultCode refusal;      ///< of a value against the rule; Success where there is none
    std::string_view meaning; ///< a sentence for people
};

/// In the order in which they are read.
inline constexpr auto kGeneralKeys = [] {
    using Fields = SRuvoConfigFields;
    using enum EKeyRule;
    using enum ERuleScope;
    using enum EResultCode;
    constexpr std::string_view kTimingMeaning = "Timing of the link, for the comms server.";
    return std::array{
        SGeneralKey{"EventRootDir", &Fields::eventRoot, ".", EventRoot, EveryLink, EventRootInvalid,
                    "Folder for events: one subfolder per relay, one file per day."},
        SGeneralKey{"ErrorLogPathname", &Fields::errorLogPath, kErrorLogName, ErrorLog, EveryLink,
                    LogFileNotWritable, "Error log: one line per problem."},
        SGeneralKey{"UseEthernet", &Fields::useEthernet, "0", Switch, EveryLink, UseEthernetInvalid,
                    "1 visits the relays of [RUVO_ETHERNET]."},
        SGeneralKey{"CommPort", &Fields::commPort, "COM1", AnyText, SerialAndModem, Success,
                    "Serial port, by its name in the comms server."},
        SGeneralKey{"BaudRate", &Fields::baudRate, "9600", BaudRate, SerialAndModem, BaudRateInvalid,
                    "Baud rate of the serial port."},
        SGeneralKey{"ElevenBits", &Fields::elevenBits, "1", Switch, SerialAndModem, ElevenBitsInvalid,
                    "1: 11-bit frames with even parity, 0: 10-bit frames without parity."},
        SGeneralKey{"BusyHoldoff", &Fields::busyHoldoff, "50", Timing, EveryLink, BusyHoldoffInvalid,
                    kTimingMeaning},
        SGeneralKey{"BusyCount", &Fields::busyCount, "100", Timing, EveryLink, BusyCountInvalid,
                    kTimingMeaning},
        SGeneralKey{"ResetResponse", &Fields::resetResponse, "100", Timing, EveryLink, ResetResponseInvalid,
                    kTimingMeaning},
        SGeneralKey{"Response", &Fields::response, "100", Timing, EveryLink, ResponseInvalid, kTimingMeaning},
        SGeneralKey{"TryCount", &Fields::tryCount, "3", Timing, EveryLink, TryCountInvalid, kTimingMeaning},
        SGeneralKey{"TransmitDelay", &Fields::transmitDelay, "5", Timing, EveryLink, TransmitDelayInvalid,
                    kTimingMeaning},
        SGeneralKey{"GlobalTransmit", &Fields::globalTransmit, "10", Timing, EveryLink, GlobalTransmitInvalid,
                    kTimingMeaning},
        SGeneralKey{"UseModem", &Fields::useModem, "0", Switch, SerialAndModem, UseModemInvalid,
                    "With UseEthernet=0: 1 visits the relays of [RUVO_MODEM], 0 those of [RUVO_SERIAL]."},
        SGeneralKey{"TAPI_ModemName", &Fields::tapiModemName, "", ModemName, ModemOnly, ModemNameMissing,
                    "Modem, by its TAPI name."},
        SGeneralKey{"TAPI_LineAddress", &Fields::tapiLineAddress, "0", AnyNumber, ModemOnly, Success,
                    "Line of the modem."},
        SGeneralKey{"TAPI_NumberToDial", &Fields::tapiNumberToDial, "", AnyText, ModemOnly, Success,
                    "Telephone number."},
        SGeneralKey{"TAPI_UseCountryAndAreaCodes", &Fields::tapiUseCountryAndAreaCodes, "0", Switch,
                    ModemOnly, UseCountryAndAreaCodesInvalid,
                    "1: dial with the country code and area code, 0: without."},
        SGeneralKey{"TAPI_AreaCode", &Fields::tapiAreaCode, "", AnyText, ModemOnly, Success, "Area code."},
        SGeneralKey{"TAPI_CountryCode", &Fields::tapiCountryCode, "", AnyText, ModemOnly, Success,
                    "Country code."},
    };
}();

/// The row of a key that the code names; a name that the table lacks does not compile.
consteval const SGeneralKey& GeneralKey(std::string_view name) {
    for (const SGeneralKey& key : kGeneralKeys) {
        if (key.name == name) {
            return key;
        }
    }
    throw "no key of that name";
}

/// The row of a name as a file writes it, in any letter case; null when there is none.
const SGeneralKey* FindGeneralKey(std::string_view name);

/// The value that represents a text that is no number: one that the rule refuses.
[[nodiscard]] std::int32_t NotANumberValue(EKeyRule rule);

/// True when the rule of the key takes the value of the field.
[[nodiscard]] bool IsAccepted(const SGeneralKey& key, const SRuvoConfigFields& fields);

/// What is expected of a value, as "0 or 1"; empty where anything will do.
std::string Expectation(EKeyRule rule);

/// How the relays are reached.
enum class ELink : std::uint8_t { Serial = 0, Modem = 1, Ethernet = 2 };

/// One link: the section that lists its relays, and what selects it.
struct SLinkRow {
    std::string_view name; ///< as users type it
    std::string_view section;
    std::string_view useEthernet; ///< what the two switches of [RUVO_GENERAL] say for it
    std::string_view useModem;
    EResultCode empty;
    EResultCode duplicate;
    std::string_view entryExpected; ///< what an entry looks like
};

/// In the order of ELink.
inline constexpr std::array kLinks{
    SLinkRow{"serial", kSerialSection, "0", "0", EResultCode::SerialSectionEmpty,
             EResultCode::SerialDuplicate, "RV001=5, a device address from 1 to 254"},
    SLinkRow{"modem", kModemSection, "0", "1", EResultCode::ModemSectionEmpty, EResultCode::ModemDuplicate,
             "RV001=5, a device address from 1 to 254"},
    SLinkRow{"ethernet", kEthernetSection, "1", "0", EResultCode::EthernetSectionEmpty,
             EResultCode::EthernetDuplicate,
             "RV001=192.168.1.10,12 or RV001=192.168.1.10,12,1 (IP, device, bus)"},
};

constexpr const SLinkRow& LinkRow(ELink link) {
    return kLinks[static_cast<std::size_t>(link)];
}

/// The link whose relays a run visits.
[[nodiscard]] ELink SelectedLink(const CRuvoConfig& config);

/// One rule on the value of a relay's key.
struct SEntryRule {
    bool (*accepts)(std::string_view text);
    EResultCode refusal;
    std::string_view expected;
};

/// In the order in which an entry is checked.
std::span<const SEntryRule> EntryRules(ELink link);

/// True for a text that loading takes as an entry of that link: a device section passes over what is no
/// number.
[[nodiscard]] bool IsEntry(ELink link, std::string_view text);

} // namespace ruvo
