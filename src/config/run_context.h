// What one run (or one connection test) carries from step to step: the configuration and the state of the
// link.
#pragma once

#include "config/ruvo_config.h"

#include <cstdint>
#include <string>
#include <utility>

namespace ruvo {

/// Made by start-up and by each connection test, and used by one thread at a time.
class CRunContext {
public:
    /// Address of the relay being handled; -1 before the first.
    std::int32_t DeviceAddress() const { return m_deviceAddress; }
    void SetDeviceAddress(std::int32_t address) { m_deviceAddress = address; }

    /// Folder under which event files are written; empty when unknown or when it could not be formed.
    const std::string& DestinationRoot() const { return m_destinationRoot; }
    void SetDestinationRoot(std::string root) { m_destinationRoot = std::move(root); }

    /// True while a COM port, modem line or Ethernet tunnel is open.
    bool IsLinkOpen() const { return m_linkOpen; }
    void SetLinkOpen(bool open) { m_linkOpen = open; }

    /// True while the modem line is connected.
    bool IsModemConnected() const { return m_modemConnected; }
    void SetModemConnected(bool connected) { m_modemConnected = connected; }

    /// True when the destination root comes from the registry and not from the INI file.
    bool IsDestinationFromRegistry() const { return m_destinationFromRegistry; }
    void SetDestinationFromRegistry(bool fromRegistry) { m_destinationFromRegistry = fromRegistry; }

    const CRuvoConfig& Config() const { return m_config; }
    /// For loading, which fills the configuration in place.
    CRuvoConfig& Config() { return m_config; }

private:
    std::int32_t m_deviceAddress = -1;
    std::string m_destinationRoot;
    bool m_linkOpen = false;
    bool m_modemConnected = false;
    bool m_destinationFromRegistry = false;
    CRuvoConfig m_config;
};

} // namespace ruvo
