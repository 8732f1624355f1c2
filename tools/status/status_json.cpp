// The status as JSON. Scripts rely on the names and on what is null.
#include "base/json_writer.h"
#include "platform/full_path.h"
#include "tools/status/status_output.h"
#include "tools/status/visit_output.h"
#include "tools/text_encoding.h"

#include <utility>

namespace ruvo {

namespace {

void WriteOptional(CJsonWriter& json, std::string_view name, const std::string& text) {
    json.Key(name);
    text.empty() ? json.Null() : json.Text(text);
}

void WriteRelay(CJsonWriter& json, const std::string& name, const SRelayStatus& relay) {
    json.Open('{');
    json.Key("relay").Text(name);
    WriteOptional(json, "last_file", relay.lastFile);
    WriteOptional(json, "last_day", relay.lastDay);
    WriteOptional(json, "last_event", relay.lastEvent);
    json.Key("silent_days");
    relay.silentDays ? json.Number(static_cast<std::uint64_t>(*relay.silentDays)) : json.Null();
    json.Key("records").Number(relay.records);
    json.Key("records_in_last_file").Number(relay.lastRecords);
    json.Key("damaged_places").Number(relay.damaged);
    WriteOptional(json, "plant", relay.plant);
    WriteOptional(json, "description", relay.description);
    WriteOptional(json, "model", relay.model);
    json.Close('}');
}

void WriteLogLine(CJsonWriter& json, const SLogLine& line) {
    json.Open('{');
    json.Key("line").Number(line.number);
    WriteOptional(json, "time", line.time);
    json.Key("message").Text(line.message);
    WriteOptional(json, "connection", line.connection);
    WriteOptional(json, "status", line.status);
    json.Close('}');
}

void WriteLog(CJsonWriter& json, const SSiteStatus& status) {
    const SLogStatus& log = status.log;
    json.Open('{');
    json.Key("exists").Bool(log.isThere);
    json.Key("lines").Number(log.lines);
    json.Key("since").Text(status.since);
    json.Key("problems").Number(log.problems);
    json.Key("muted_problems").Number(log.muted);
    json.Key("by_connection").Open('[');
    for (const auto& [name, group] : log.groups) {
        json.Open('{');
        const SRelayVisit* const relay =
            status.visits ? RelayOfConnection(*status.visits, group.connection) : nullptr;
        WriteOptional(json, "connection", name);
        WriteOptional(json, "key", relay == nullptr ? std::string() : relay->key);
        json.Key("problems").Number(group.problems);
        WriteOptional(json, "last", group.lastTime);
        json.Close('}');
    }
    json.Close(']');
    json.Key("latest").Open('[');
    for (const SLogLine& line : log.latest) {
        WriteLogLine(json, line);
    }
    json.Close(']');
    json.Close('}');
}

void WriteLeftovers(CJsonWriter& json, const SSiteLeftovers& leftovers) {
    json.Open('{');
    WriteOptional(json, "state_folder", SystemTextToUtf8(DisplayPath(leftovers.stateFolder)));
    json.Key("readable").Bool(leftovers.IsRead());
    for (const auto& [name, number] : {std::pair("events_waiting", leftovers.EventsWaiting()),
                                       {"events_set_aside", leftovers.EventsSetAside()}}) {
        json.Key(name);
        number ? json.Number(*number) : json.Null();
    }
    json.Close('}');
}

} // namespace

void WriteStatus(CJsonWriter& json, const SSiteStatus& status, const SVerdict& verdict) {
    json.Key("state").Text(StateName(verdict.state));
    json.Key("causes").Open('[');
    for (const SCause& cause : verdict.causes) {
        json.Open('{');
        json.Key("state").Text(StateName(cause.state));
        json.Key("text").Text(cause.text);
        json.Close('}');
    }
    json.Close(']');
    json.Key("relays").Open('[');
    for (const auto& [name, relay] : status.relays) {
        WriteRelay(json, name, relay);
    }
    json.Close(']');
    json.Key("log");
    WriteLog(json, status);
    if (status.visits) {
        json.Key("visits");
        WriteVisits(json, *status.visits);
    }
    json.Key("leftovers");
    WriteLeftovers(json, status.leftovers);
}

std::string StatusAsJson(const SSiteStatus& status, const SVerdict& verdict) {
    std::string out;
    CJsonWriter json(out);
    json.Open('{');
    WriteStatus(json, status, verdict);
    json.Close('}');
    return out + '\n';
}

} // namespace ruvo
