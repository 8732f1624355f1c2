#include "tools/visit/relay_progress.h"

#include "base/text.h"
#include "tools/sites/site_visits.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace ruvo {

namespace {

std::string Clock(std::int64_t seconds) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%02lld:%02lld", static_cast<long long>(seconds / 60),
                  static_cast<long long>(seconds % 60));
    return text.data();
}

std::uint64_t EventsOf(const SVisitLine& line) {
    std::uint64_t events = 0;
    for (const SVisitEntry& entry : line.entries) {
        events += entry.taken;
    }
    return events;
}

/// An entry without address only tells of recovered events.
bool IsVisit(const SVisitEntry& entry) {
    return !entry.address.empty();
}

const SVisitedRelay* RelayUnderWay(const SVisitLine& line, const SSitePlaces& places) {
    const auto isDone = [&line](const SVisitedRelay& relay) {
        return std::ranges::any_of(line.entries, [&relay](const SVisitEntry& entry) {
            return IsVisit(entry) && entry.key == relay.key;
        });
    };
    const auto found = std::ranges::find_if_not(places.relays, isDone);
    return found == places.relays.end() ? nullptr : &*found;
}

struct STroubleRow {
    std::uint64_t SVisitEntry::*events;
    EPriority priority;
    std::string_view what;
};
/// The worst first.
constexpr std::array kTroubles{
    STroubleRow{&SVisitEntry::lost, EPriority::Error, " lost"},
    STroubleRow{&SVisitEntry::setAside, EPriority::Warning, " set aside"},
    STroubleRow{&SVisitEntry::waiting, EPriority::Warning, " in the journal for the next run"},
};

} // namespace

CRelayNames::CRelayNames(const std::string& iniPath, const SSitePlaces& places) {
    for (const SRelayVisit& relay : ReadSiteVisits(iniPath, places, 0).relays) {
        m_names[{relay.key, relay.address}] = relay.Label();
    }
}

std::string CRelayNames::Of(const std::string& key, const std::string& address) const {
    const auto found = m_names.find({key, address});
    return found == m_names.end() ? key + " (" + address + ")" : found->second;
}

std::string ProgressText(const SVisitLine& line, const SSitePlaces& places, const CRelayNames& names,
                         std::int64_t seconds) {
    const std::string rest = ", " + Counted(EventsOf(line), "event") + ", " + Clock(seconds);
    const SVisitedRelay* const relay = RelayUnderWay(line, places);
    if (relay == nullptr) {
        return Counted(places.relays.size(), "relay") + " visited" + rest;
    }
    const auto done = std::ranges::count_if(line.entries, IsVisit);
    return "relay " + std::to_string(done + 1) + " of " + std::to_string(places.relays.size()) + ", " +
           names.Of(relay->key, relay->address) + rest;
}

std::pair<EPriority, std::string> RelayText(const SVisitEntry& entry, const CRelayNames& names) {
    EPriority priority = EPriority::Notice;
    const auto worsen = [&priority](EPriority other) { priority = std::min(priority, other); };
    std::string name = names.Of(entry.key, entry.address);
    if (!entry.plant.empty() || !entry.name.empty()) { // as it calls itself tonight
        name = (entry.plant.empty() ? entry.name : entry.plant) + " (" + entry.key + ")";
    }
    std::string text = name + (entry.isReached ? ": " + Counted(entry.taken, "event") : ": not reached");
    for (const STroubleRow& row : kTroubles) {
        if (entry.*row.events > 0) {
            worsen(row.priority);
            text += ", " + std::to_string(entry.*row.events) + std::string(row.what);
        }
    }
    if (entry.status != 0 || !entry.isReached) {
        worsen(EPriority::Warning);
        text += entry.statusText.empty() ? "" : "; " + entry.statusText;
    }
    return {priority, text};
}

std::string TotalText(const SVisitLine& line, std::size_t relays, std::int64_t seconds) {
    const auto reached = std::ranges::count_if(line.entries, &SVisitEntry::isReached);
    return std::to_string(reached) + " of " + Counted(relays, "relay") + " reached, " +
           Counted(EventsOf(line), "event") + ", " + Clock(seconds);
}

CRelayProgress::CRelayProgress(const CRunWatch& records, const SSitePlaces& places, const CRelayNames& names,
                               CVisitOutput& output)
    : m_records(records), m_places(places), m_names(names), m_output(output) {}

void CRelayProgress::Look(std::uint64_t process) {
    if (const auto run = m_records.Find(process)) {
        ShowNewRelays(run->line);
        m_output.ShowProgress(ProgressText(run->line, m_places, m_names, Seconds()));
    }
}

void CRelayProgress::Finish(const SSeenRun& run) {
    ShowNewRelays(run.line);
    m_output.ClearProgress();
    if (m_output.IsJournal() || m_output.IsForPerson()) {
        m_output.Say(EPriority::Notice, TotalText(run.line, m_places.relays.size(), Seconds()));
    }
}

void CRelayProgress::ShowNewRelays(const SVisitLine& line) {
    for (; m_shown < line.entries.size(); ++m_shown) {
        const SVisitEntry& entry = line.entries[m_shown];
        if (m_output.IsJournal() && IsVisit(entry)) {
            const auto [priority, text] = RelayText(entry, m_names);
            m_output.Say(priority, text);
        }
    }
}

std::int64_t CRelayProgress::Seconds() const {
    const auto gone = std::chrono::steady_clock::now() - m_begun;
    return std::chrono::duration_cast<std::chrono::seconds>(gone).count();
}

} // namespace ruvo
