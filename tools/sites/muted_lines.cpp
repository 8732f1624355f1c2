#include "tools/sites/muted_lines.h"

#include "tools/lines/explain.h"

namespace ruvo {

bool IsMutedLine(const SSiteVisits& visits, const SLogLine& line) {
    const SRelayVisit* const relay = RelayOfConnection(visits, ShortConnectionName(line.connection));
    const auto meaning = relay != nullptr && relay->mute ? Explain(line) : std::nullopt;
    return meaning && meaning->Concern() == EConcern::Link;
}

} // namespace ruvo
