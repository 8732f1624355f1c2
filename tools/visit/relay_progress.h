// How far a visit is, relay by relay, from the record of its run while that grows.
#pragma once

#include "ledger/run_watch.h"
#include "tools/ini/site_places.h"
#include "tools/visit/visit_output.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace ruvo {

/// Names of the site's relays for people, by key and address, from earlier visits.
class CRelayNames {
public:
    CRelayNames() = default;
    CRelayNames(const std::string& iniPath, const SSitePlaces& places);
    /// Its plant text, else its name, with its key; without either, its key and address.
    [[nodiscard]] std::string Of(const std::string& key, const std::string& address) const;

private:
    std::map<std::pair<std::string, std::string>, std::string> m_names;
};

/// A line of the progress on a terminal: what is under way. `seconds` is how long it takes so far.
[[nodiscard]] std::string ProgressText(const SVisitLine& line, const SSitePlaces& places,
                                       const CRelayNames& names, std::int64_t seconds);
/// What a relay's visit came to, and what it is worth in the systemd journal.
[[nodiscard]] std::pair<EPriority, std::string> RelayText(const SVisitEntry& entry, const CRelayNames& names);
/// "12 of 12 relays reached, 37 events, 00:41".
[[nodiscard]] std::string TotalText(const SVisitLine& line, std::size_t relays, std::int64_t seconds);

/// Shows that of one run: on a terminal as one line that changes, in the journal as a line a relay.
class CRelayProgress {
public:
    static constexpr std::chrono::milliseconds kPause{500};

    CRelayProgress(const CRunWatch& records, const SSitePlaces& places, const CRelayNames& names,
                   CVisitOutput& output);

    /// Looks at the record of that process.
    void Look(std::uint64_t process);
    /// The same when it has ended.
    void Finish(const SSeenRun& run);

private:
    void ShowNewRelays(const SVisitLine& line);
    [[nodiscard]] std::int64_t Seconds() const;

    const CRunWatch& m_records;
    const SSitePlaces& m_places;
    const CRelayNames& m_names;
    CVisitOutput& m_output;
    std::chrono::steady_clock::time_point m_begun = std::chrono::steady_clock::now();
    std::size_t m_shown = 0; ///< relays that have their line
};

} // namespace ruvo
