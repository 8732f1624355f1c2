#include "tools/sites/muted_lines.h"

#include "base/text.h"
#include "tools/lines/explain.h"

#include <algorithm>

namespace ruvo {

namespace {

/// The muted relay whose link the line is about; null for none.
const SRelayVisit* MutedRelayOf(const SSiteVisits& visits, const SLogLine& line) {
    const SRelayVisit* const relay = RelayOfConnection(visits, line.connection);
    const auto meaning = relay != nullptr && relay->mute ? Explain(line) : std::nullopt;
    return meaning && meaning->Concern() == EConcern::Link ? relay : nullptr;
}

} // namespace

bool IsMutedLine(const SSiteVisits& visits, const SLogLine& line) {
    return MutedRelayOf(visits, line) != nullptr;
}

std::map<std::string, std::uint64_t> CountMutedLines(const SSiteVisits& visits, std::string_view logged) {
    std::map<std::string, std::uint64_t> counts;
    while (!logged.empty()) {
        const std::size_t end = std::min(logged.find('\n'), logged.size());
        const SLogLine line = ParseLogLine(TrimEnd(logged.substr(0, end), kWhiteSpace));
        if (const SRelayVisit* const relay = MutedRelayOf(visits, line)) {
            ++counts[relay->key];
        }
        logged.remove_prefix(std::min(end + 1, logged.size()));
    }
    return counts;
}

} // namespace ruvo
