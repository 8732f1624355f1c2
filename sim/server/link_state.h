// The link of the simulated server: what is open, and which relay answers at an address.
#pragma once

#include "sim/relay/simulated_relay.h"

#include <memory>
#include <string>
#include <vector>

namespace ruvo::sim {

/// Owns the relays. Not safe for use by several threads.
class CLinkState {
public:
    /// Borrows the substation.
    explicit CLinkState(const SSubstation& substation);

    /// Opens a serial port, or the tunnel that a connection string names.
    LinkStatus Open(const std::string& port, const std::string& parameters);
    LinkStatus Close();
    /// What a call would come to at once: a status that means no call is made, or good.
    LinkStatus CheckModem(const std::string& modem) const;
    /// Makes the call; the status with which it ends.
    LinkStatus Dial(const std::string& number);
    LinkStatus HangUp();
    /// Ends a call that was not completed.
    void DropCall();

    bool IsOpen() const { return m_open != ELink::Nothing; }
    /// The relay that answers at the address over what is open; null when there is none.
    CSimulatedRelay* Find(std::uint8_t address);
    template <typename Use>
    void ForEachRelay(Use use) {
        for (const auto& relay : m_relays) {
            use(*relay);
        }
    }
    /// Moves a relay to another address on what is open.
    void Move(CSimulatedRelay& relay, std::uint8_t address) const;

private:
    enum class ELink : std::uint8_t { Nothing, Serial, Modem, Ethernet };
    LinkStatus OpenSerial(const std::string& port, const std::string& parameters);
    LinkStatus OpenTunnel(const std::string& connection);
    bool Reaches(CSimulatedRelay& relay, std::uint8_t address) const;

    const SSubstation& m_substation;
    std::vector<std::unique_ptr<CSimulatedRelay>> m_relays;
    ELink m_open = ELink::Nothing;
    std::string m_openName; ///< port, number or IP address that is open
    int m_bus = 0;
};

} // namespace ruvo::sim
