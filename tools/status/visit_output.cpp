#include "tools/status/visit_output.h"

#include "base/text.h"
#include "tools/text_encoding.h"

#include <algorithm>
#include <array>

namespace ruvo {

namespace {

using Value = std::optional<std::int64_t>;

Value Whole(std::uint64_t number) {
    return static_cast<std::int64_t>(number);
}

Value SecondsOfVisit(const SRelayVisit& relay) {
    const auto begin = relay.entry ? SecondsOfRecord(relay.entry->begin) : std::nullopt;
    const auto end = relay.entry ? SecondsOfRecord(relay.entry->end) : std::nullopt;
    return begin && end ? Value(std::max<std::int64_t>(*end - *begin, 0)) : std::nullopt;
}

template <class Of>
struct SMetric {
    std::string_view name;
    std::string_view help;
    Value (*value)(const Of& of);
};

// Published names never change: dashboards and alarms depend on them.
constexpr std::array kVisitMetrics{
    SMetric<SSiteVisits>{"ruvo_visit_timestamp_seconds", "When the last visit began",
                         [](const SSiteVisits& visits) -> Value {
                             return visits.summary.last ? SecondsOfRecord(visits.summary.last->begin)
                                                        : std::nullopt;
                         }},
    SMetric<SSiteVisits>{"ruvo_visit_duration_seconds", "How long the last visit took",
                         [](const SSiteVisits& visits) -> Value { return visits.lengthSeconds; }},
    SMetric<SSiteVisits>{"ruvo_visit_result",
                         "How the last visit ended: 0 whole, 1 by a signal, 2 killed, 3 could not begin",
                         [](const SSiteVisits& visits) -> Value {
                             return visits.summary.last
                                        ? Whole(static_cast<std::uint64_t>(visits.summary.last->ended))
                                        : std::nullopt;
                         }},
    SMetric<SSiteVisits>{"ruvo_visit_running", "1 while a visit is going on",
                         [](const SSiteVisits& visits) -> Value { return visits.summary.running ? 1 : 0; }},
    SMetric<SSiteVisits>{"ruvo_visit_relays", "Relays of the INI file",
                         [](const SSiteVisits& visits) { return Whole(visits.relays.size()); }},
    SMetric<SSiteVisits>{"ruvo_visit_relays_reached", "Relays that the last visit has reached",
                         [](const SSiteVisits& visits) {
                             return visits.summary.last ? Whole(visits.Reached()) : std::nullopt;
                         }},
    SMetric<SSiteVisits>{"ruvo_visit_events", "Events that the last visit has fetched",
                         [](const SSiteVisits& visits) {
                             return visits.summary.last ? Whole(visits.EventsTaken()) : std::nullopt;
                         }},
};

constexpr std::array kRelayVisitMetrics{
    SMetric<SRelayVisit>{"ruvo_relay_reached", "1 if the last visit has reached the relay",
                         [](const SRelayVisit& relay) -> Value {
                             return relay.entry ? Value(relay.IsReached() ? 1 : 0) : std::nullopt;
                         }},
    SMetric<SRelayVisit>{
        "ruvo_relay_last_reached_timestamp_seconds", "When the relay was last reached",
        [](const SRelayVisit& relay) -> Value { return SecondsOfRecord(relay.lastReached); }},
    SMetric<SRelayVisit>{"ruvo_relay_muted", "1 while the relay is muted",
                         [](const SRelayVisit& relay) -> Value { return relay.mute ? 1 : 0; }},
    SMetric<SRelayVisit>{
        "ruvo_relay_events_fetched", "Events of the relay that the last visit has fetched",
        [](const SRelayVisit& relay) { return relay.entry ? Whole(relay.entry->taken) : std::nullopt; }},
    SMetric<SRelayVisit>{
        "ruvo_relay_missed_nights", "Nights since the relay was last reached on which a visit missed it",
        [](const SRelayVisit& relay) { return relay.entry ? Whole(relay.nights) : std::nullopt; }},
    SMetric<SRelayVisit>{
        "ruvo_relay_events_lost", "Events of the relay that the last visit has lost",
        [](const SRelayVisit& relay) { return relay.entry ? Whole(relay.entry->lost) : std::nullopt; }},
    SMetric<SRelayVisit>{"ruvo_relay_visit_seconds", "How long the last visit was with the relay",
                         SecondsOfVisit},
};

void WriteOptional(CJsonWriter& json, std::string_view name, const std::string& text) {
    json.Key(name);
    text.empty() ? json.Null() : json.Text(text);
}

void WriteOptional(CJsonWriter& json, std::string_view name, Value value) {
    json.Key(name);
    value ? json.Signed(*value) : json.Null();
}

void WriteLast(CJsonWriter& json, const SSiteVisits& visits) {
    const SVisitLine& last = *visits.summary.last;
    json.Open('{');
    json.Key("number").Number(last.number);
    WriteOptional(json, "begin", last.begin);
    WriteOptional(json, "end", last.end);
    WriteOptional(json, "seconds", visits.lengthSeconds);
    json.Key("ended").Text(RunEndName(last.ended));
    WriteOptional(json, "signal", last.signal);
    WriteOptional(json, "result", last.ended == ERunEnd::NotBegun ? Whole(last.result) : std::nullopt);
    json.Key("log_lines").Number(last.logLines);
    json.Key("relays_reached").Number(visits.Reached());
    json.Key("events").Number(visits.EventsTaken());
    json.Close('}');
}

void WriteMute(CJsonWriter& json, const SMute& mute) {
    json.Open('{');
    json.Key("since").Text(mute.since);
    json.Key("until").Text(mute.until);
    json.Key("why").Text(mute.why);
    json.Close('}');
}

void WriteRelayVisit(CJsonWriter& json, const SRelayVisit& relay) {
    json.Open('{');
    json.Key("key").Text(relay.key);
    json.Key("address").Text(relay.address);
    WriteOptional(json, "relay", relay.name);
    WriteOptional(json, "plant", relay.plant);
    json.Key("visited").Bool(relay.entry.has_value());
    json.Key("reached").Bool(relay.IsReached());
    WriteOptional(json, "last_reached", relay.lastReached);
    json.Key("missed_nights").Number(relay.nights);
    WriteOptional(json, "events", relay.entry ? Whole(relay.entry->taken) : std::nullopt);
    WriteOptional(json, "seconds", SecondsOfVisit(relay));
    WriteOptional(json, "status", relay.entry ? Whole(relay.entry->status) : std::nullopt);
    WriteOptional(json, "status_text", relay.entry ? relay.entry->statusText : std::string());
    json.Key("muted");
    relay.mute ? WriteMute(json, *relay.mute) : json.Null();
    json.Close('}');
}

} // namespace

std::string VisitSummaryText(const SSiteVisits& visits) {
    if (!visits.summary.last) {
        return {};
    }
    const SVisitLine& last = *visits.summary.last;
    return "last visit " + RecordTimeForPeople(last.begin) +
           (visits.lengthSeconds ? " (" + LengthForPeople(*visits.lengthSeconds) + ")" : "") + ", " +
           std::to_string(visits.Reached()) + " of " + Counted(visits.relays.size(), "relay") + " reached" +
           (visits.Muted() > 0 ? " (" + std::to_string(visits.Muted()) + " muted)" : "") + ", " +
           Counted(visits.EventsTaken(), "event");
}

std::vector<std::vector<std::string>> VisitRows(const SSiteVisits& visits) {
    std::vector<std::vector<std::string>> rows{
        {"key", "address", "relay", "plant", "reached", "last reached", "status", "events", "seconds"}};
    for (const SRelayVisit& relay : visits.relays) {
        const Value seconds = SecondsOfVisit(relay);
        rows.push_back(
            {EscapeControls(relay.key), EscapeControls(relay.address),
             relay.name.empty() ? "-" : EscapeControls(relay.name),
             relay.plant.empty() ? "-" : EscapeControls(relay.plant),
             std::string(!relay.entry        ? "not visited"
                         : relay.IsReached() ? "yes"
                                             : "no") +
                 (relay.mute ? ", muted" : ""),
             relay.lastReached.empty() ? "-" : RecordTimeForPeople(relay.lastReached),
             relay.entry && relay.entry->status != 0 ? EscapeControls(relay.entry->statusText) : "-",
             relay.entry ? std::to_string(relay.entry->taken) : "-",
             seconds ? std::to_string(*seconds) : "-"});
    }
    return rows;
}

void WriteVisits(CJsonWriter& json, const SSiteVisits& visits) {
    constexpr std::array<std::string_view, 3> kHistories{"found", "none", "not readable"};
    json.Open('{');
    json.Key("records").Text(kHistories.at(static_cast<std::size_t>(visits.summary.history)));
    json.Key("folders").Open('[');
    for (const std::string& folder : visits.summary.folders) {
        json.Text(folder);
    }
    json.Close(']');
    WriteOptional(json, "since", visits.summary.since);
    json.Key("running").Bool(visits.summary.running.has_value());
    json.Key("last");
    visits.summary.last ? WriteLast(json, visits) : json.Null();
    json.Key("relays").Open('[');
    for (const SRelayVisit& relay : visits.relays) {
        WriteRelayVisit(json, relay);
    }
    json.Close(']');
    json.Close('}');
}

void AddVisitMetrics(CMetrics& out, const SSiteVisits& visits, const std::string& siteLabel) {
    for (const auto& metric : kVisitMetrics) {
        if (const Value value = metric.value(visits)) {
            out.Add(metric.name, metric.help, siteLabel, *value);
        }
    }
    for (const auto& metric : kRelayVisitMetrics) {
        for (const SRelayVisit& relay : visits.relays) {
            if (const Value value = metric.value(relay)) {
                out.Add(metric.name, metric.help, siteLabel + ',' + RelayLabels(relay), *value);
            }
        }
    }
}

std::string RelayLabels(const SRelayVisit& relay) {
    return MetricLabel("relay", relay.name.empty() ? relay.key : relay.name) + ',' +
           MetricLabel("key", relay.key) + ',' + MetricLabel("plant", relay.plant);
}

} // namespace ruvo
