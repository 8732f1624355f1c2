#include "sim/server/link_state.h"

#include "link/seam/tunnel_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace ruvo::sim {
namespace {

struct STunnel {
    std::string_view transport;
    std::string_view ip;
    int bus = 0;
};

// Takes one quoted field and the comma before it.
bool ParseField(std::string_view& rest, bool first, std::string_view& field) {
    const std::string_view opening = first ? "\"" : ",\"";
    if (rest.substr(0, opening.size()) != opening) {
        return false;
    }
    rest.remove_prefix(opening.size());
    const std::size_t end = rest.find('"');
    if (end == std::string_view::npos) {
        return false;
    }
    field = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    return true;
}

std::optional<int> ParseNumber(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

// Five quoted fields: transport, IP address, bus, device, 0.
std::optional<STunnel> ParseTunnel(std::string_view text) {
    std::array<std::string_view, 5> fields;
    text.remove_prefix(kTunnelPrefix.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (!ParseField(text, i == 0, fields[i])) {
            return std::nullopt;
        }
    }
    const std::optional<int> bus = ParseNumber(fields[2]);
    // The device number only has to be one: requests carry the address that counts.
    if (!text.empty() || !bus || !ParseNumber(fields[3]) || !ParseNumber(fields[4])) {
        return std::nullopt;
    }
    return STunnel{fields[0], fields[1], *bus};
}

// A listed destination answers with its status; one that is not listed is there when a relay is.
template <typename IsThere>
LinkStatus DestinationStatus(const std::vector<SDestination>& listed, const std::vector<SRelay>& relays,
                             std::string_view name, LinkStatus fallback, IsThere isThere) {
    const auto found = std::find_if(listed.begin(), listed.end(),
                                    [name](const SDestination& candidate) { return candidate.name == name; });
    if (found != listed.end()) {
        return found->status;
    }
    return std::any_of(relays.begin(), relays.end(), isThere) ? kLinkGood : fallback;
}

} // namespace

CLinkState::CLinkState(const SSubstation& substation) : m_substation(substation) {
    for (const SRelay& relay : substation.relays) {
        m_relays.push_back(std::make_unique<CSimulatedRelay>(relay));
    }
}

LinkStatus CLinkState::Open(const std::string& port, const std::string& parameters) {
    if (IsOpen()) {
        return kLinkCannotOpenPort;
    }
    return port.rfind(kTunnelPrefix, 0) == 0 ? OpenTunnel(port) : OpenSerial(port, parameters);
}

LinkStatus CLinkState::OpenSerial(const std::string& port, const std::string& parameters) {
    const auto& ports = m_substation.link.serial;
    const auto found = std::find_if(ports.begin(), ports.end(),
                                    [&](const SSerialPort& candidate) { return candidate.port == port; });
    if (found == ports.end()) {
        return kLinkCannotOpenPort;
    }
    if (found->status != kLinkGood) {
        return found->status;
    }
    if (found->parameters && *found->parameters != parameters) {
        return kLinkBadPortParameters;
    }
    m_open = ELink::Serial;
    m_openName = port;
    return kLinkGood;
}

LinkStatus CLinkState::OpenTunnel(const std::string& connection) {
    const std::optional<STunnel> tunnel = ParseTunnel(connection);
    if (!tunnel) {
        return kLinkWrongParameters;
    }
    const LinkStatus status = DestinationStatus(
        m_substation.link.ethernet, m_substation.relays, tunnel->ip, kLinkCannotOpenPort,
        [&](const SRelay& relay) { return relay.ethernet && relay.ethernet->ip == tunnel->ip; });
    if (status != kLinkGood || tunnel->transport != kTunnelTransport) {
        return status != kLinkGood ? status : kLinkCannotOpenPort;
    }
    m_open = ELink::Ethernet;
    m_openName = tunnel->ip;
    m_bus = tunnel->bus;
    return kLinkGood;
}

LinkStatus CLinkState::Close() {
    if (m_open != ELink::Serial && m_open != ELink::Ethernet) {
        return kLinkNothingToClose;
    }
    m_open = ELink::Nothing;
    return kLinkGood;
}

LinkStatus CLinkState::CheckModem(const std::string& modem) const {
    const auto& modems = m_substation.link.modems;
    if (std::find(modems.begin(), modems.end(), modem) == modems.end()) {
        return kLinkNoSuchLine;
    }
    return IsOpen() ? kLinkLineInUse : kLinkGood;
}

// The line is taken at once and given back when the call fails or is aborted.
LinkStatus CLinkState::Dial(const std::string& number) {
    const LinkStatus status =
        DestinationStatus(m_substation.link.numbers, m_substation.relays, number, kLinkCallTimedOut,
                          [&](const SRelay& relay) { return relay.modem && relay.modem->number == number; });
    if (status == kLinkGood) {
        m_open = ELink::Modem;
        m_openName = number;
    }
    return status;
}

LinkStatus CLinkState::HangUp() {
    if (m_open != ELink::Modem) {
        return kLinkNoCall;
    }
    m_open = ELink::Nothing;
    return kLinkGood;
}

void CLinkState::DropCall() {
    if (m_open == ELink::Modem) {
        m_open = ELink::Nothing;
    }
}

// A relay may be reached in several ways; only the way that is open counts.
bool CLinkState::Reaches(CSimulatedRelay& relay, std::uint8_t address) const {
    switch (m_open) {
    case ELink::Serial: {
        const auto& place = relay.SerialAddress();
        return place && place->address == address && (place->port.empty() || place->port == m_openName);
    }
    case ELink::Modem:
        return relay.ModemAddress() == SModemAddress{m_openName, address};
    case ELink::Ethernet:
        return relay.EthernetAddress() == SEthernetAddress{m_openName, m_bus, address};
    case ELink::Nothing:
        break;
    }
    return false;
}

CSimulatedRelay* CLinkState::Find(std::uint8_t address) {
    const auto found = std::find_if(m_relays.begin(), m_relays.end(),
                                    [&](const auto& relay) { return Reaches(*relay, address); });
    return found == m_relays.end() ? nullptr : found->get();
}

void CLinkState::Move(CSimulatedRelay& relay, std::uint8_t address) const {
    if (m_open == ELink::Serial) {
        relay.SerialAddress()->address = address;
    } else if (m_open == ELink::Modem) {
        relay.ModemAddress()->address = address;
    } else if (m_open == ELink::Ethernet) {
        relay.EthernetAddress()->address = address;
    }
}

} // namespace ruvo::sim
