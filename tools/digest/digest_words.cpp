#include "tools/digest/digest_words.h"

#include "base/text.h"

#include <algorithm>

namespace ruvo {

namespace {

std::string CountedAny(std::uint64_t number, std::string_view what) {
    return number == 0 ? std::string() : Counted(number, what);
}

std::string LengthOf(const SVisitLine& run) {
    const auto begin = SecondsOfRecord(run.begin);
    const auto end = SecondsOfRecord(run.end);
    return begin && end && *end >= *begin ? " (" + LengthForPeople(*end - *begin) + ")" : std::string();
}

void Replace(std::string& text, std::string_view what, const std::string& with) {
    for (std::size_t at = 0; !with.empty() && (at = text.find(what, at)) != std::string::npos;
         at += with.size()) {
        text.replace(at, what.size(), with);
    }
}

} // namespace

void Join(std::string& text, const std::string& part, std::string_view separator) {
    if (!part.empty()) {
        text += text.empty() ? "" : separator;
        text += part;
    }
}

std::string CountsText(std::uint64_t trips, std::uint64_t faults, std::uint64_t total) {
    std::string text;
    Join(text, CountedAny(trips, "trip"));
    Join(text, CountedAny(faults, "fault"));
    const bool isGrave = !text.empty();
    Join(text, CountedAny(total - trips - faults, isGrave ? "other event" : "event"));
    return text.empty() ? "no events" : text;
}

std::uint64_t CountOf(const SSiteDigest& site, EEventKind kind) {
    std::uint64_t count = 0;
    for (const SDigestBay& bay : site.bays) {
        count += bay.Count(kind);
    }
    return count;
}

std::string OtherKinds(const SDigestBay& bay) {
    std::string text;
    for (std::size_t kind = 0; kind < kEventKindCount; ++kind) {
        const auto which = static_cast<EEventKind>(kind);
        if (bay.counts[kind] > 0 && which != EEventKind::Trip && which != EEventKind::Fault) {
            Join(text, std::string(EventKindName(which)) + " " + std::to_string(bay.counts[kind]));
        }
    }
    return text;
}

std::string BayName(const SDigestBay& bay) {
    std::string in = bay.key;
    Join(in, bay.label == bay.name ? std::string() : bay.name);
    return bay.label + (in.empty() ? in : " (" + in + ")");
}

std::vector<SVisitLine> VisitsOf(const SSiteDigest& site) {
    std::vector<SVisitLine> visits = site.visits;
    std::erase_if(visits, [](const SVisitLine& run) { return run.kind != ERunKind::Visit; });
    return visits;
}

std::string VisitText(const SSiteDigest& site) {
    const std::vector<SVisitLine> visits = VisitsOf(site);
    if (visits.empty()) {
        return site.lastVisit.empty() ? "no visit"
                                      : "no visit; the last one began " + RecordTimeForPeople(site.lastVisit);
    }
    std::string text =
        visits.size() == 1 ? "visit of " : Counted(visits.size(), "visit") + ", the last one of ";
    text += RecordTimeForPeople(visits.back().begin) + LengthOf(visits.back());
    const std::size_t all = site.relays + site.notVisited;
    if (all > 0) {
        text += ", " + std::to_string(site.reached) + " of " + Counted(all, "relay") + " reached";
    }
    return text + (site.notVisited > 0 ? ", " + std::to_string(site.notVisited) + " not visited" : "");
}

std::string EndText(const SVisitLine& run) {
    const std::string visit = "The visit of " + RecordTimeForPeople(run.begin);
    switch (run.ended) {
    case ERunEnd::Signal:
        return visit + " was ended by " + run.signal + "; " + Counted(run.notVisited, "relay") +
               " not visited.";
    case ERunEnd::Killed:
        return visit + " was killed, or the machine stopped.";
    case ERunEnd::NotBegun:
        return visit + " could not begin: result code " + std::to_string(run.result) + ".";
    case ERunEnd::Whole:
        break;
    }
    return {};
}

std::string TodoText(std::span<const SDigestProblem* const> same) {
    std::string text = same.front()->todo;
    std::string addresses;
    for (const SDigestProblem* const problem : same) {
        Join(addresses, problem->ip, " and ");
    }
    Replace(text, "the address in the line", addresses);
    if (same.size() == 1) {
        Replace(text, "KEY", same.front()->key);
    }
    return text;
}

} // namespace ruvo
