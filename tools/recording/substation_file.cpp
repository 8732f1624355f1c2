#include "tools/recording/substation_file.h"

#include "base/code_page.h"
#include "link/seam/tunnel_text.h"
#include "tools/events/event_fields.h"
#include "tools/recording/relay_table.h"
#include "tools/recording/toml_text.h"
#include "tools/recording/whole_calls.h"

#include <charconv>
#include <map>
#include <set>
#include <vector>

namespace ruvo {

namespace {

using enum EOperation;

std::string TextAt(const SWholeCall& call, std::size_t input) {
    if (input >= call.inputs.size() || call.inputs[input].kind != EValueKind::Text) {
        return {};
    }
    return SystemTextToUtf8(std::string(call.inputs[input].bytes.begin(), call.inputs[input].bytes.end()));
}

/// The quoted fields of a tunnel's text.
std::vector<std::string> TunnelFields(const std::string& text) {
    std::vector<std::string> fields;
    for (std::size_t at = text.find('"'); at != std::string::npos;) {
        const std::size_t end = text.find('"', at + 1);
        if (end == std::string::npos) {
            break;
        }
        fields.push_back(text.substr(at + 1, end - at - 1));
        at = text.find('"', end + 1);
    }
    return fields;
}

/// Follows a recording's calls, and collects what they tell of the link and of each relay.
class CSubstationMaker {
public:
    void Take(const SWholeCall& call);
    std::string Text(std::int64_t begin, std::uint64_t leftOut) const;

private:
    void TakeFetch(const SWholeCall& call);
    void TakeOpening(const SWholeCall& call);
    void TakeModemCall(const SWholeCall& call);
    void TakeLinkCall(const SWholeCall& call);
    void AddLinkFault(const SWholeCall& call);
    std::string Remarks(std::uint64_t leftOut) const;
    std::string LinkTable() const;

    std::optional<SOpenLink> m_open;
    std::map<std::string, std::map<std::string, LinkStatus>> m_ports; ///< parameters and status by name
    std::set<std::string> m_modems;
    std::map<std::string, LinkStatus> m_numbers;
    std::map<std::string, LinkStatus> m_addresses;
    std::map<std::pair<SOpenLink, std::uint8_t>, CRelayFacts> m_relays;
    std::map<EOperation, std::uint64_t> m_linkCalls;
    std::string m_linkFaults;
};

/// Fetching names no relay: the calls of all count together.
void CSubstationMaker::TakeFetch(const SWholeCall& call) {
    constexpr std::string_view kStart = "StartGet";
    const SOperationRow* const fetch =
        FindOperation("Fetch" + std::string(call.operation->name.substr(kStart.size())));
    const std::uint64_t number = fetch == nullptr ? 0 : ++m_linkCalls[fetch->operation];
    const std::optional<std::size_t> useless = UselessOutput(call.outputs);
    if (number > 0 && (call.fetchStatus != kLinkGood || useless)) {
        m_linkFaults += FaultTable(
            {.operation = *fetch, .relay = {}, .cell = {}, .number = number, .status = call.fetchStatus});
    }
}

void CSubstationMaker::Take(const SWholeCall& call) {
    if (call.fetchStatus) {
        TakeFetch(call);
    }
    const auto address = call.NumberAt(0, EValueKind::UI1);
    if (call.operation->target == ETarget::Link) {
        TakeLinkCall(call);
    } else if (m_open && address) {
        const auto number = static_cast<std::uint8_t>(*address);
        m_relays.try_emplace({*m_open, number}, *m_open, number).first->second.Take(call);
    }
}

void CSubstationMaker::TakeLinkCall(const SWholeCall& call) {
    ++m_linkCalls[call.operation->operation];
    switch (call.operation->operation) {
    case OpenPort:
        TakeOpening(call);
        break;
    case ModemConnect:
        TakeModemCall(call);
        break;
    case ClosePort:
    case ModemHangUp:
        if (call.status == kLinkGood && m_open) {
            m_open.reset();
        } else {
            AddLinkFault(call);
        }
        break;
    case SetTransactionValues:
        if (call.status != kLinkGood) {
            AddLinkFault(call);
        }
        break;
    default: // an abort is the client's own; what was fetched belongs to what was started
        break;
    }
}

void CSubstationMaker::TakeOpening(const SWholeCall& call) {
    const std::string port = TextAt(call, 0);
    if (!call.status) {
        AddLinkFault(call);
        return;
    }
    if (!port.starts_with(kTunnelPrefix)) {
        m_ports[port].try_emplace(TextAt(call, 1), *call.status);
        m_open = {ELinkKind::Serial, port};
    } else if (const std::vector<std::string> fields = TunnelFields(port); fields.size() > 2) {
        int bus = 0;
        std::from_chars(fields[2].data(), fields[2].data() + fields[2].size(), bus);
        m_addresses.try_emplace(fields[1], *call.status);
        m_open = {ELinkKind::Ethernet, fields[1], bus};
    }
    if (call.status != kLinkGood) {
        m_open.reset();
    }
}

void CSubstationMaker::TakeModemCall(const SWholeCall& call) {
    constexpr std::size_t kNumber = 4;
    if (call.status != kLinkGood) {
        AddLinkFault(call);
        return;
    }
    m_modems.insert(TextAt(call, 0));
    m_numbers.try_emplace(TextAt(call, kNumber), call.completion.value_or(kLinkComFailure));
    m_open = {ELinkKind::Modem, TextAt(call, kNumber)};
    if (call.completion != kLinkGood) {
        m_open.reset();
    }
}

void CSubstationMaker::AddLinkFault(const SWholeCall& call) {
    if (call.status != kLinkGood) {
        m_linkFaults += FaultTable({.operation = *call.operation,
                                    .relay = {},
                                    .cell = {},
                                    .number = m_linkCalls[call.operation->operation],
                                    .status = call.status});
    }
}

std::string DestinationTexts(std::string_view list, std::string_view key,
                             const std::map<std::string, LinkStatus>& destinations) {
    std::string text;
    for (const auto& [name, status] : destinations) {
        text += (text.empty() ? "{ " : ", { ") + std::string(key) + " = " + TomlText(name) +
                ", status = " + std::to_string(status & 0xFFU) + " }";
    }
    return text.empty() ? "" : std::string(list) + " = [" + text + "]\n";
}

std::string CSubstationMaker::LinkTable() const {
    std::string ports;
    for (const auto& [port, openings] : m_ports) {
        const auto& [parameters, status] = *openings.begin();
        ports += (ports.empty() ? "{ port = " : ", { port = ") + TomlText(port) +
                 ", parameters = " + TomlText(parameters) + ", status = " + std::to_string(status & 0xFFU) +
                 " }";
    }
    std::string modems;
    for (const std::string& modem : m_modems) {
        modems += (modems.empty() ? "" : ", ") + TomlText(modem);
    }
    return "\n[link]\n" + (ports.empty() ? "" : "serial = [" + ports + "]\n") +
           (modems.empty() ? "" : "modems = [" + modems + "]\n") +
           DestinationTexts("numbers", "number", m_numbers) + DestinationTexts("ethernet", "ip", m_addresses);
}

std::string CSubstationMaker::Remarks(std::uint64_t leftOut) const {
    std::string text;
    if (leftOut > 0) {
        text += "# The recording has left out " + std::to_string(leftOut) + " entries.\n";
    }
    for (const auto& [place, relay] : m_relays) {
        if (!relay.changed.empty()) {
            std::string cells;
            for (const std::string& cell : relay.changed) {
                cells += (cells.empty() ? "" : ", ") + cell;
            }
            // As a TOML text, since a name may hold anything.
            text += "# " + TomlText(NameOf(relay)) +
                    ": these cells changed; here they keep their first value: " + cells + "\n";
        }
    }
    return text;
}

std::string CSubstationMaker::Text(std::int64_t begin, std::uint64_t leftOut) const {
    std::string time;
    AppendUtc(time, begin * 1000);
    std::string text = "# From a recording of " + time + ". Passwords that were accepted are " +
                       TomlText(kStandInPassword) + " here, or as much of\n" +
                       "# it as the relay takes; ruvoctl password set stores it in an INI file.\n" +
                       Remarks(leftOut) + LinkTable();
    std::string faults = m_linkFaults;
    for (const auto& [place, relay] : m_relays) {
        if (relay.hasAnswered) { // else there is none at this address
            text += RelayTable(relay);
            faults += FaultTables(relay);
        }
    }
    return text + faults;
}

} // namespace

std::string SubstationFileOf(CRecordingReader& reader) {
    CWholeCalls calls(reader);
    CSubstationMaker maker;
    for (SWholeCall call; calls.Next(call);) {
        maker.Take(call);
    }
    return maker.Text(reader.Begin(), calls.LeftOut());
}

} // namespace ruvo
