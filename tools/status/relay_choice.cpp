#include "tools/status/relay_choice.h"

#include "tools/status/site_status.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <set>

namespace ruvo {

namespace {

using Texts = std::initializer_list<const std::string*>;

bool AnyContains(Texts texts, const std::string& part) {
    return std::ranges::any_of(texts, [&part](const std::string* text) { return ContainsText(*text, part); });
}

bool IsMeant(const std::string& wanted, const SRelayVisit& relay) {
    return AnyContains({&relay.key, &relay.address, &relay.name, &relay.plant}, wanted);
}

auto HasFilesOf(const std::string& name) {
    return [&name](const SRelayVisit& relay) { return relay.HasFilesOf(name); };
}

/// "Feeder 7 (RV003), TR42-00002001": those of the INI file, then those of the day files alone.
std::string ChoicesText(const SSiteStatus& status) {
    constexpr std::size_t kMostListed = 20;
    std::vector<std::string> labels;
    if (status.visits) {
        for (const SRelayVisit& relay : status.visits->relays) {
            labels.push_back(relay.Label());
        }
    }
    for (const auto& [name, relay] : status.relays) {
        const bool isKnown = status.visits && std::ranges::any_of(status.visits->relays, HasFilesOf(name));
        if (!isKnown) {
            labels.push_back(relay.plant.empty() ? name : relay.plant + " (" + name + ")");
        }
    }
    std::string text;
    for (std::size_t at = 0; at < std::min(labels.size(), kMostListed); ++at) {
        text += (at == 0 ? "" : ", ") + labels[at];
    }
    return labels.size() > kMostListed
               ? text + ", and " + std::to_string(labels.size() - kMostListed) + " more"
           : labels.empty() ? "none"
                            : text;
}

} // namespace

void ChooseRelays(const SStatusChoice& choice, SSiteStatus& status) {
    if (choice.relay.empty()) {
        return;
    }
    const std::string choices = ChoicesText(status);
    std::set<std::string> names;
    for (const auto& [name, relay] : status.relays) {
        if (AnyContains({&name, &relay.plant, &relay.description, &relay.model}, choice.relay)) {
            names.insert(name);
        }
    }
    if (status.visits) {
        std::erase_if(status.visits->relays, [&](const SRelayVisit& relay) {
            return !IsMeant(choice.relay, relay) &&
                   std::ranges::none_of(names, [&](const auto& name) { return relay.HasFilesOf(name); });
        });
        for (const auto& [name, relay] : status.relays) {
            if (std::ranges::any_of(status.visits->relays, HasFilesOf(name))) {
                names.insert(name);
            }
        }
    }
    std::erase_if(status.relays, [&names](const auto& relay) { return !names.contains(relay.first); });
    status.hasRelay = !status.relays.empty() || (status.visits && !status.visits->relays.empty());
    if (!status.hasRelay) {
        status.failures.push_back("no relay matches \"" + choice.relay + "\"; there are: " + choices);
    }
}

bool IsChosenLine(const SStatusChoice& choice, const SSiteStatus& status, const SSiteVisits* visits,
                  const SLogLine& line) {
    if (choice.relay.empty() && choice.match.empty()) {
        return true;
    }
    const SRelayVisit* const relay =
        visits != nullptr ? RelayOfConnection(*visits, line.connection) : nullptr;
    if (!choice.relay.empty() && visits != nullptr && !line.connection.empty()) {
        const bool isLeft =
            relay != nullptr && std::ranges::any_of(status.visits->relays, [&](const auto& left) {
                return left.key == relay->key && left.address == relay->address;
            });
        if (!isLeft) {
            return false;
        }
    }
    const std::string label = relay != nullptr ? relay->Label() : std::string();
    return choice.match.empty() ||
           AnyContains({&line.message, &line.connection, &line.status, &label}, choice.match);
}

} // namespace ruvo
