#include "tools/sites/site_visits.h"

#include "base/text.h"
#include "config/ethernet_entry.h"
#include "ledger/visit_record.h"
#include "tools/given_time.h"
#include "tools/log_lines.h"
#include "tools/text_encoding.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 60 * kMinute;
constexpr std::int64_t kDay = 24 * kHour;
constexpr std::size_t kDate = 10; ///< characters of "2026-11-25"

const SVisitEntry* FindEntry(const std::optional<SVisitLine>& visit, const SVisitedRelay& relay) {
    if (!visit) {
        return nullptr;
    }
    const auto found = std::ranges::find_if(visit->entries, [&relay](const SVisitEntry& entry) {
        return entry.key == relay.key && entry.address == relay.address;
    });
    return found == visit->entries.end() ? nullptr : &*found;
}

/// Without records, nobody knows whether a visit has ended the mutes: then none counts.
void ApplyMutes(const std::string& fullIniPath, SSiteVisits& visits, std::int64_t now) {
    SMutes found = ReadMutes(fullIniPath);
    visits.muteFailure = std::move(found.failure);
    if (visits.summary.history == EHistory::NotReadable || !visits.summary.isWhole) {
        return;
    }
    for (SMute& mute : found.mutes) {
        const auto relay = std::ranges::find(visits.relays, mute.key, &SRelayVisit::key);
        if (relay != visits.relays.end() &&
            WhyVoid(mute, {relay->address, relay->lastReached}, now).empty()) {
            relay->mute = std::move(mute);
        }
    }
}

/// As ShortConnectionName has it.
std::string ConnectionName(const std::string& linkName, const std::string& address) {
    if (address.find(',') == std::string::npos) {
        return linkName + " device " + address;
    }
    const std::int32_t bus = ParseEthernetBusAddress(address);
    return ParseEthernetIp(address) + " device " + std::to_string(ParseEthernetDeviceAddress(address)) +
           (bus > 0 ? " bus " + std::to_string(bus) : "");
}

} // namespace

bool SRelayVisit::HasFilesOf(std::string_view relayOfFile) const {
    const auto withoutBlanks = [](std::string_view text) {
        std::string rest(text);
        std::erase(rest, ' ');
        return rest;
    };
    return !name.empty() && (name == relayOfFile || withoutBlanks(name) == withoutBlanks(relayOfFile));
}

std::string SRelayVisit::Label() const {
    const std::string& known = plant.empty() ? name : plant;
    return known.empty() ? key + " (" + address + ")" : known + " (" + key + ")";
}

std::size_t SSiteVisits::Reached() const {
    return static_cast<std::size_t>(std::ranges::count_if(relays, &SRelayVisit::IsReached));
}

std::size_t SSiteVisits::Muted() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(relays, [](const SRelayVisit& relay) { return relay.mute.has_value(); }));
}

std::uint64_t SSiteVisits::EventsTaken() const {
    std::uint64_t events = 0;
    for (const SRelayVisit& relay : relays) {
        events += relay.entry ? relay.entry->taken : 0;
    }
    return events;
}

bool SSiteVisits::IsVisited() const {
    return summary.last && summary.last->ended != ERunEnd::NotBegun;
}

bool SSiteVisits::HasNothingLogged() const {
    return summary.last && summary.last->ended != ERunEnd::Killed && summary.last->logLines == 0;
}

SSiteVisits ReadSiteVisits(const std::string& fullIniPath, const SSitePlaces& places, std::int64_t now,
                           const CVisitHistory::Take& also) {
    SSiteVisits status;
    status.summary = SummariseVisits(places.events, fullIniPath, also);
    status.iniPath = RecordedIniPath(fullIniPath);
    status.linkName = places.linkName;
    const auto& last = status.summary.last;
    for (const SVisitedRelay& relay : places.relays) {
        SRelayVisit visit;
        visit.key = relay.key;
        visit.address = relay.address;
        visit.link = relay.link;
        if (const auto known = status.summary.relays.find({relay.key, relay.address});
            known != status.summary.relays.end()) {
            visit.name = known->second.name;
            visit.plant = known->second.plant;
            visit.missedSince = known->second.missedSince;
            visit.nights = known->second.nights;
            visit.lastReached = known->second.lastReached;
        }
        if (const SVisitEntry* const entry = FindEntry(last, relay)) {
            visit.entry = *entry;
        }
        status.relays.push_back(std::move(visit));
    }
    ApplyMutes(fullIniPath, status, now);
    const auto begin = last ? SecondsOfRecord(last->begin) : std::nullopt;
    const auto end = last ? SecondsOfRecord(last->end) : std::nullopt;
    if (begin) {
        status.ageSeconds = now - *begin;
    }
    if (begin && end) {
        status.lengthSeconds = std::max<std::int64_t>(*end - *begin, 0);
    }
    return status;
}

bool IsConnectionOf(std::string_view connection, std::string_view link, const std::string& linkName,
                    const std::string& address) {
    return LinkOfConnection(connection) == link &&
           ShortConnectionName(connection) == ConnectionName(linkName, address);
}

const SRelayVisit* RelayOfConnection(const SSiteVisits& visits, std::string_view connection) {
    const auto found = std::ranges::find_if(visits.relays, [&](const SRelayVisit& relay) {
        return IsConnectionOf(connection, relay.link, visits.linkName, relay.address);
    });
    return found == visits.relays.end() ? nullptr : &*found;
}

std::string MissedSince(const SSiteVisits& visits, const SRelayVisit& relay) {
    const std::string nights = relay.nights > 0 ? ", " + Counted(relay.nights, "night") : std::string();
    return "not reached since " +
           (relay.lastReached.empty()
                ? "visits are recorded (" + RecordTimeForPeople(visits.summary.since).substr(0, kDate) + ")"
                : RecordTimeForPeople(relay.lastReached).substr(0, kDate)) +
           nights;
}

std::string MissedText(const SSiteVisits& visits, const SRelayVisit& relay) {
    return relay.Label() + " " + MissedSince(visits, relay);
}

std::string MuteEndForPeople(const SMute& mute) {
    constexpr std::int64_t kSecond = 1;
    const auto end = SecondsOfRecord(mute.until);
    const std::string time = RecordTimeForPeople(mute.until);
    return end && time.ends_with(" 00:00") ? "the end of " + LocalTimeText(*end - kSecond).substr(0, kDate)
                                           : time;
}

std::string MuteText(const SMute& mute) {
    return "muted until " + MuteEndForPeople(mute) + ": " + mute.why;
}

std::optional<std::int64_t> SecondsOfRecord(const std::string& time) {
    constexpr std::string_view kPattern = "0000-00-00T00:00:00Z";
    const bool isOne =
        time.size() == kPattern.size() && std::ranges::equal(time, kPattern, [](char c, char form) {
            return form == '0' ? IsDigit(c) : c == form;
        });
    const auto day = isOne ? DayNumber(time.substr(0, time.find('T'))) : std::nullopt;
    const auto two = [&time](std::size_t at) { return std::int64_t{std::stoi(time.substr(at, 2))}; };
    return day ? std::optional(*day * kDay + two(11) * kHour + two(14) * kMinute + two(17)) : std::nullopt;
}

std::string RecordTimeForPeople(const std::string& time) {
    constexpr std::size_t kToMinutes = 16;
    const auto seconds = SecondsOfRecord(time);
    if (!seconds) {
        return "an unknown time";
    }
    std::string text = LocalTimeText(*seconds).substr(0, kToMinutes);
    text[kDate] = ' ';
    return text;
}

std::string LengthForPeople(std::int64_t seconds) {
    const auto part = [](std::int64_t number, const char* unit) {
        return std::to_string(number) + " " + unit;
    };
    if (seconds < kMinute) {
        return part(seconds, "s");
    }
    if (seconds < kHour) {
        return part(seconds / kMinute, "min") + " " + part(seconds % kMinute, "s");
    }
    return seconds < 2 * kDay ? part(seconds / kHour, "h") + " " + part(seconds % kHour / kMinute, "min")
                              : part(seconds / kDay, "days");
}

} // namespace ruvo
