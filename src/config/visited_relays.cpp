#include "config/visited_relays.h"

#include "config/ini_keys.h"

namespace ruvo {

std::vector<SVisitedRelay> VisitedRelays(const CRuvoConfig& config) {
    std::vector<SVisitedRelay> relays;
    const ELink link = SelectedLink(config);
    if (link == ELink::Ethernet) {
        for (const auto& [key, entry] : config.EthernetEntries()) {
            relays.push_back({key, entry});
        }
        return relays;
    }
    for (const auto& [key, address] : link == ELink::Modem ? config.ModemEntries() : config.SerialEntries()) {
        relays.push_back({key, std::to_string(address)});
    }
    return relays;
}

} // namespace ruvo
