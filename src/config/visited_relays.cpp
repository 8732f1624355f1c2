#include "config/visited_relays.h"

#include "config/ini_keys.h"

namespace ruvo {

std::vector<SVisitedRelay> VisitedRelays(const CRuvoConfig& config) {
    std::vector<SVisitedRelay> relays;
    const ELink link = SelectedLink(config);
    const std::string name(LinkRow(link).name);
    if (link == ELink::Ethernet) {
        for (const auto& [key, entry] : config.EthernetEntries()) {
            relays.push_back({key, entry, name});
        }
        return relays;
    }
    for (const auto& [key, address] : link == ELink::Modem ? config.ModemEntries() : config.SerialEntries()) {
        relays.push_back({key, std::to_string(address), name});
    }
    return relays;
}

} // namespace ruvo
