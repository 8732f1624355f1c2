// The digest for programs. Members are only added, never renamed; the schema's number counts changes.
#include "base/json_writer.h"
#include "tools/digest/digest_output.h"
#include "tools/digest/digest_words.h"

#include <algorithm>

namespace ruvo {

namespace {

constexpr std::uint64_t kSchema = 1;

void WriteKnown(CJsonWriter& json, std::string_view key, const std::string& text) {
    json.Key(key);
    if (text.empty()) {
        json.Null();
    } else {
        json.Text(text);
    }
}

template <class TItems, class TWrite>
void WriteList(CJsonWriter& json, std::string_view key, const TItems& items, TWrite write) {
    json.Key(key).Open('[');
    for (const auto& item : items) {
        write(item);
    }
    json.Close(']');
}

template <class TItems, class TWrite>
void WriteObjects(CJsonWriter& json, std::string_view key, const TItems& items, TWrite write) {
    WriteList(json, key, items, [&](const auto& item) {
        json.Open('{');
        write(item);
        json.Close('}');
    });
}

std::string KindKey(EEventKind kind) {
    std::string key(EventKindName(kind));
    std::ranges::transform(key, key.begin(), [](char c) {
        return c == ' ' ? '_' : c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return key;
}

void WriteVisit(CJsonWriter& json, const SVisitLine& run) {
    json.Key("number").Number(run.number);
    json.Key("kind").Text(run.kind == ERunKind::Recover ? "recover" : "visit");
    json.Key("attempt").Number(run.attempt);
    WriteKnown(json, "begin", run.begin);
    WriteKnown(json, "end", run.end);
    json.Key("ended").Text(RunEndName(run.ended));
}

void WriteBay(CJsonWriter& json, const SDigestBay& bay) {
    json.Key("bay").Text(bay.label);
    json.Key("relay").Text(bay.name);
    WriteKnown(json, "key", bay.key);
    json.Key("counts").Open('{');
    for (std::size_t kind = 0; kind < kEventKindCount; ++kind) {
        json.Key(KindKey(static_cast<EEventKind>(kind))).Number(bay.counts[kind]);
    }
    json.Close('}');
    json.Key("damaged_places").Number(bay.damaged);
    json.Key("odd_times").Number(bay.oddTimes);
    WriteObjects(json, "events", bay.events, [&json](const SDigestEvent& event) {
        json.Key("time").Text(event.time);
        json.Key("kind").Text(KindKey(event.kind));
        json.Key("event").Text(event.event);
        json.Key("value").Text(event.value);
        json.Key("details").Text(event.details);
    });
}

void WriteProblem(CJsonWriter& json, const SDigestProblem& problem) {
    json.Key("severity").Text(SeverityName(problem.severity));
    json.Key("concern").Text(ConcernName(problem.concern));
    WriteKnown(json, "where", problem.where);
    json.Key("happened").Text(problem.happened);
    const SDigestProblem* const one = &problem;
    WriteKnown(json, "to_do", TodoText(std::span(&one, 1)));
    json.Key("count").Number(problem.count);
    WriteKnown(json, "last_time", problem.lastTime);
    json.Key("over").Bool(problem.isOver);
}

void WriteSite(CJsonWriter& json, const SSiteDigest& site) {
    json.Key("site").Text(site.name);
    json.Key("ini").Text(site.ini);
    WriteKnown(json, "last_visit", site.lastVisit);
    json.Key("lacks_visit").Bool(site.lacksVisit);
    json.Key("relays_reached").Number(site.reached);
    json.Key("relays_visited").Number(site.relays);
    json.Key("relays_not_visited").Number(site.notVisited);
    WriteObjects(json, "gaps", site.gaps, [&json](const SVisitGap& gap) {
        json.Key("from").Text(gap.from);
        json.Key("to").Text(gap.to);
    });
    json.Key("events").Number(site.Total());
    json.Key("lost").Number(site.lost);
    json.Key("set_aside").Number(site.setAside);
    json.Key("waiting").Number(site.waiting);
    json.Key("recovered").Number(site.recovered);
    WriteObjects(json, "visits", site.visits, [&json](const SVisitLine& run) { WriteVisit(json, run); });
    const auto writeMissed = [&json](const SMissedRelay& relay) {
        json.Key("relay").Text(relay.label);
        WriteKnown(json, "last_reached", relay.lastReached);
        WriteKnown(json, "status_text", relay.status);
    };
    WriteObjects(json, "not_reached", site.missed, writeMissed);
    WriteObjects(json, "not_reached_muted", site.muted, writeMissed);
    WriteObjects(json, "bays", site.bays, [&json](const SDigestBay& bay) { WriteBay(json, bay); });
    WriteObjects(json, "problems", site.problems,
                 [&json](const SDigestProblem& problem) { WriteProblem(json, problem); });
    WriteObjects(json, "silent", site.silent, [&json](const SSilentRelay& relay) {
        json.Key("relay").Text(relay.label);
        WriteKnown(json, "last_day", relay.lastDay);
        json.Key("days").Signed(relay.days);
    });
    WriteList(json, "notes", site.notes, [&json](const std::string& note) { json.Text(note); });
    WriteList(json, "failures", site.failures, [&json](const std::string& failure) { json.Text(failure); });
}

} // namespace

std::string DigestAsJson(const SDigest& digest) {
    std::string out;
    CJsonWriter json(out);
    json.Open('{');
    json.Key("schema").Number(kSchema);
    json.Key("headline").Text(HeadlineOf(digest));
    json.Key("made").Text(digest.made);
    json.Key("period").Text(digest.period);
    WriteObjects(json, "sites", digest.sites, [&json](const SSiteDigest& site) { WriteSite(json, site); });
    WriteList(json, "failures", digest.failures, [&json](const std::string& failure) { json.Text(failure); });
    json.Close('}');
    return out + "\n";
}

} // namespace ruvo
