// The status as metrics. Published names never change: dashboards and alarms depend on them.
#include "tools/status/status_output.h"

#include "tools/given_time.h"
#include "tools/status/metric_lines.h"
#include "tools/status/visit_output.h"

#include <array>
#include <map>

namespace ruvo {

namespace {

using Value = std::optional<std::int64_t>;

constexpr std::int64_t kSecondsPerDay = 86'400;

Value Seconds(const std::string& day) {
    const auto number = DayNumber(day);
    return number ? Value(*number * kSecondsPerDay) : std::nullopt;
}

/// "2026-11-16T03:12:45" as if it were UTC.
Value SecondsOfEvent(const std::string& time) {
    constexpr std::size_t kDateSize = 10;
    if (time.size() < kDateSize + 9) {
        return std::nullopt;
    }
    const auto two = [&time](std::size_t at) {
        return std::int64_t{time[at] - '0'} * 10 + (time[at + 1] - '0');
    };
    const Value day = Seconds(time.substr(0, kDateSize));
    return day ? Value(*day + two(11) * 3600 + two(14) * 60 + two(17)) : std::nullopt;
}

struct SRelayMetric {
    std::string_view name;
    std::string_view help;
    Value (*value)(const SRelayStatus& relay);
};

Value Whole(std::uint64_t number) {
    return static_cast<std::int64_t>(number);
}

constexpr std::array kRelayMetrics{
    SRelayMetric{"ruvo_relay_records", "Records in all day files of the relay",
                 [](const SRelayStatus& relay) { return Whole(relay.records); }},
    SRelayMetric{"ruvo_relay_last_file_records", "Records in the relay's newest day file",
                 [](const SRelayStatus& relay) { return Whole(relay.lastRecords); }},
    SRelayMetric{"ruvo_relay_last_file_timestamp_seconds",
                 "Start of the UTC day of the relay's newest day file",
                 [](const SRelayStatus& relay) { return Seconds(relay.lastDay); }},
    SRelayMetric{"ruvo_relay_last_event_timestamp_seconds",
                 "Latest event in the newest day file, by the relay's clock taken as UTC",
                 [](const SRelayStatus& relay) { return SecondsOfEvent(relay.lastEvent); }},
    SRelayMetric{"ruvo_relay_silent_seconds", "Whole days since the UTC day of the relay's newest day file",
                 [](const SRelayStatus& relay) {
                     return relay.silentDays ? Value(*relay.silentDays * kSecondsPerDay) : std::nullopt;
                 }},
    SRelayMetric{"ruvo_relay_damaged_places", "Damaged places in all day files of the relay",
                 [](const SRelayStatus& relay) { return Whole(relay.damaged); }},
    SRelayMetric{"ruvo_relay_new_damaged_places",
                 "Damaged places in the relay's day files within the time that the check covers",
                 [](const SRelayStatus& relay) { return Whole(relay.freshDamaged); }},
};

/// Of each relay that the INI file names, as the log names its connection.
void AddProblems(CMetrics& out, const SSiteStatus& status, const std::string& siteLabel) {
    std::map<const SRelayVisit*, std::uint64_t> problems;
    for (const auto& [name, group] : status.log.groups) {
        problems[RelayOfConnection(*status.visits, group.connection)] += group.problems;
    }
    for (const SRelayVisit& relay : status.visits->relays) {
        out.Add("ruvo_relay_problems",
                "Lines in the error log about the relay, within the time that the check covers",
                siteLabel + ',' + RelayLabels(relay), *Whole(problems[&relay]));
    }
}

void AddSite(CMetrics& out, const SSiteReport& site, std::int64_t now) {
    const SSiteStatus& status = site.status;
    const std::string siteLabel = MetricLabel("site", site.name);
    for (const SRelayMetric& metric : kRelayMetrics) {
        for (const auto& [name, relay] : status.relays) {
            if (const Value value = metric.value(relay)) {
                out.Add(metric.name, metric.help, siteLabel + ',' + MetricLabel("relay", name), *value);
            }
        }
    }
    out.Add("ruvo_site_state", "0 good, 1 warning, 2 critical, 3 unknown", siteLabel,
            static_cast<std::int64_t>(site.verdict.state));
    out.Add("ruvo_site_relays", "Relays that have a day file or are expected to have one", siteLabel,
            *Whole(status.relays.size()));
    if (status.log.isThere || status.log.isMissing) { // else nobody could read it
        out.Add("ruvo_log_lines", "Lines in the error log", siteLabel, *Whole(status.log.lines));
        out.Add("ruvo_log_problems", "Lines in the error log within the time that the check covers",
                siteLabel, *Whole(status.log.problems));
    }
    out.Add("ruvo_status_timestamp_seconds", "When these figures were taken", siteLabel, now);
    if (status.visits) {
        AddVisitMetrics(out, *status.visits, siteLabel);
        AddProblems(out, status, siteLabel);
    }
    for (const auto& [what, bytes] : status.freeBytes) {
        out.Add("ruvo_disk_free_bytes", "Room on the disk of the day files, the error log, the state folder",
                siteLabel + ',' + MetricLabel("of", what), *Whole(bytes));
    }
    // What is unknown is left out: a 0 would be a guess.
    if (const auto waiting = status.leftovers.EventsWaiting()) {
        out.Add("ruvo_events_waiting", "Events in the journals of runs that have ended", siteLabel,
                *Whole(*waiting));
    }
    if (const auto setAside = status.leftovers.EventsSetAside()) {
        out.Add("ruvo_events_set_aside", "Events in set-aside files", siteLabel, *Whole(*setAside));
    }
}

} // namespace

std::string StatusAsMetrics(std::span<const SSiteReport> sites, std::int64_t now) {
    CMetrics metrics;
    for (const SSiteReport& site : sites) {
        AddSite(metrics, site, now);
    }
    return metrics.Text();
}

} // namespace ruvo
