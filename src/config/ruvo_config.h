// The loaded configuration: what the INI file says, with defaults filled in, before any rule has judged it.
#pragma once

#include "base/secret.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ruvo {

/// Entries of a device section, key text ("RV000" to "RV999") to device address; byte order is visiting
/// order.
using AddressEntries = std::map<std::string, std::int32_t>;
/// Entries of a section of texts, key text to text.
using TextEntries = std::map<std::string, std::string>;

/// The fields of a configuration, gathered while loading. Integers are never negative; a text that is no
/// number has become the value that its own rule refuses.
struct SRuvoConfigFields {
    std::string iniPath;
    std::string errorLogPath;
    bool errorLogPathGiven = false;
    std::string eventRoot;
    std::int32_t useModem = 0;
    std::int32_t useEthernet = 0;
    std::string commPort;
    std::int32_t baudRate = 0;
    std::int32_t elevenBits = 0;
    std::int32_t busyHoldoff = 0;
    std::int32_t busyCount = 0;
    std::int32_t resetResponse = 0;
    std::int32_t response = 0;
    std::int32_t tryCount = 0;
    std::int32_t transmitDelay = 0;
    std::int32_t globalTransmit = 0;
    std::string tapiModemName;
    std::int32_t tapiLineAddress = 0;
    std::string tapiNumberToDial;
    std::int32_t tapiUseCountryAndAreaCodes = 0;
    std::string tapiCountryCode;
    std::string tapiAreaCode;
    AddressEntries serialEntries;
    AddressEntries modemEntries;
    TextEntries ethernetEntries;
    TextEntries passwords;
    std::vector<std::string_view> sectionsWithDuplicates;
};

/// One loaded configuration. Filled once, by loading; read only from then on, until its passwords are wiped.
class CRuvoConfig {
public:
    CRuvoConfig() = default;
    explicit CRuvoConfig(SRuvoConfigFields fields) : m_fields(std::move(fields)) {}

    /// Full path of the INI file.
    const std::string& IniPath() const { return m_fields.iniPath; }
    /// Full path of the error log; empty when nothing was loaded or the event root could not be formed.
    const std::string& ErrorLogPath() const { return m_fields.errorLogPath; }
    /// True when the INI file names the error log itself.
    bool IsErrorLogPathGiven() const { return m_fields.errorLogPathGiven; }
    /// Full path without separators at its end; empty when it could not be formed.
    const std::string& EventRoot() const { return m_fields.eventRoot; }

    std::int32_t UseModem() const { return m_fields.useModem; }
    std::int32_t UseEthernet() const { return m_fields.useEthernet; }
    const std::string& CommPort() const { return m_fields.commPort; }
    std::int32_t BaudRate() const { return m_fields.baudRate; }
    std::int32_t ElevenBits() const { return m_fields.elevenBits; }
    std::int32_t BusyHoldoff() const { return m_fields.busyHoldoff; }
    std::int32_t BusyCount() const { return m_fields.busyCount; }
    std::int32_t ResetResponse() const { return m_fields.resetResponse; }
    std::int32_t Response() const { return m_fields.response; }
    std::int32_t TryCount() const { return m_fields.tryCount; }
    std::int32_t TransmitDelay() const { return m_fields.transmitDelay; }
    std::int32_t GlobalTransmit() const { return m_fields.globalTransmit; }

    const std::string& TapiModemName() const { return m_fields.tapiModemName; }
    std::int32_t TapiLineAddress() const { return m_fields.tapiLineAddress; }
    const std::string& TapiNumberToDial() const { return m_fields.tapiNumberToDial; }
    std::int32_t TapiUseCountryAndAreaCodes() const { return m_fields.tapiUseCountryAndAreaCodes; }
    const std::string& TapiCountryCode() const { return m_fields.tapiCountryCode; }
    const std::string& TapiAreaCode() const { return m_fields.tapiAreaCode; }

    const AddressEntries& SerialEntries() const { return m_fields.serialEntries; }
    const AddressEntries& ModemEntries() const { return m_fields.modemEntries; }
    /// Entry texts "IP,device,bus" as typed; ethernet_entry.h takes them apart.
    const TextEntries& EthernetEntries() const { return m_fields.ethernetEntries; }
    /// Plain passwords, at most 8 characters each.
    const TextEntries& Passwords() const { return m_fields.passwords; }
    /// True when a relay key occurs more than once in that section of relays or passwords.
    bool HasDuplicates(std::string_view section) const {
        const auto& sections = m_fields.sectionsWithDuplicates;
        return std::find(sections.begin(), sections.end(), section) != sections.end();
    }
    /// All of it, for the rules, which name fields.
    const SRuvoConfigFields& Fields() const { return m_fields; }
    /// Overwrites the plain passwords, which are not needed after the last relay.
    void WipePasswords() {
        for (auto& [key, password] : m_fields.passwords) {
            WipeText(password);
        }
        m_fields.passwords.clear();
    }

private:
    SRuvoConfigFields m_fields;
};

} // namespace ruvo
