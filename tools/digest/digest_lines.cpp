#include "tools/digest/digest_lines.h"

#include "base/text.h"

#include <algorithm>

namespace ruvo {

namespace {

using enum EDigestLine;

std::string Minute(const std::string& recorded) {
    const auto seconds = SecondsOfRecord(recorded);
    if (!seconds) {
        return "an unknown time";
    }
    std::string text = LocalTimeText(*seconds);
    text[10] = ' ';
    return text.substr(0, 16);
}

void Join(std::string& text, const std::string& part, std::string_view separator = ", ") {
    if (!part.empty()) {
        text += text.empty() ? "" : separator;
        text += part;
    }
}

std::string CountedAny(std::uint64_t number, std::string_view what) {
    return number == 0 ? std::string() : Counted(number, what);
}

/// "2 trips, 1 fault, 34 other events".
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

/// "12 starts, 3 alarms" of the kinds that are not listed.
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

std::string LengthOf(const SVisitLine& run) {
    const auto begin = SecondsOfRecord(run.begin);
    const auto end = SecondsOfRecord(run.end);
    return begin && end && *end >= *begin ? " (" + LengthForPeople(*end - *begin) + ")" : std::string();
}

std::vector<SVisitLine> VisitsOf(const SSiteDigest& site) {
    std::vector<SVisitLine> visits = site.visits;
    std::erase_if(visits, [](const SVisitLine& run) { return run.kind != ERunKind::Visit; });
    return visits;
}

/// "visit of 2026-11-25 02:00 (3 min 4 s), 11 of 12 relays reached".
std::string VisitText(const SSiteDigest& site) {
    const std::vector<SVisitLine> visits = VisitsOf(site);
    if (visits.empty()) {
        return site.lastVisit.empty() ? "no visit" : "no visit; the last one began " + Minute(site.lastVisit);
    }
    std::string text =
        visits.size() == 1 ? "visit of " : Counted(visits.size(), "visit") + ", the last one of ";
    text += Minute(visits.back().begin) + LengthOf(visits.back());
    return site.relays == 0 ? text
                            : text + ", " + std::to_string(site.reached) + " of " +
                                  Counted(site.relays, "relay") + " reached";
}

std::string EndText(const SVisitLine& run) {
    const std::string visit = "The visit of " + Minute(run.begin);
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

class CLineMaker {
public:
    CLineMaker(const SDigest& digest, std::size_t mostEvents) : m_digest(digest), m_mostEvents(mostEvents) {}

    std::vector<SDigestLine> Make() {
        Add(Headline, HeadlineOf(m_digest));
        Add(Lead, "What came in " + m_digest.period + ", as of " + m_digest.made +
                      ". Times of visits are local; event times are the relays' own.");
        for (const std::string& failure : m_digest.failures) {
            Add(Alarm, failure);
        }
        std::vector<const SSiteDigest*> sites;
        for (const SSiteDigest& site : m_digest.sites) {
            sites.push_back(&site);
        }
        std::ranges::stable_sort(
            sites, [](const SSiteDigest* a, const SSiteDigest* b) { return a->Rank() < b->Rank(); });
        for (const SSiteDigest* const site : sites) {
            if (site->Rank() < kQuiet || sites.size() == 1) {
                AddSite(*site);
            }
        }
        AddQuietSites(sites);
        return std::move(m_lines);
    }

private:
    static constexpr int kQuiet = 2;

    void Add(EDigestLine kind, const std::string& text) { m_lines.push_back({kind, text}); }

    void AddSite(const SSiteDigest& site) {
        Add(Site,
            site.name + ": " + VisitText(site) + ", " +
                CountsText(CountOf(site, EEventKind::Trip), CountOf(site, EEventKind::Fault), site.Total()));
        AddTrouble(site);
        for (const SDigestBay& bay : site.bays) {
            if (bay.Grave() + bay.damaged > 0) {
                AddBay(bay);
            }
        }
        for (const SDigestBay& bay : site.bays) {
            if (bay.Grave() + bay.damaged == 0) {
                Add(Text, BayName(bay) + ": " + OtherKinds(bay));
            }
        }
        AddProblems(site.problems);
        for (const SSilentRelay& relay : site.silent) {
            Add(Text, relay.label + " answers, but has had no event for " +
                          Counted(static_cast<std::uint64_t>(relay.days), "day") +
                          (relay.lastDay.empty() ? std::string() : " (since " + relay.lastDay + ")"));
        }
        for (const std::string& note : site.notes) {
            Add(Text, note);
        }
    }

    void AddTrouble(const SSiteDigest& site) {
        for (const std::string& failure : site.failures) {
            Add(Alarm, failure);
        }
        if (site.lacksVisit) {
            Add(Alarm, "There was no visit.");
            Add(Todo, "Is the timer on, and did the machine run? \"systemctl list-timers 'ruvo@*'\" and "
                      "\"ruvoctl status " +
                          site.ini + "\" tell more.");
        }
        for (const SVisitLine& run : VisitsOf(site)) {
            if (run.ended != ERunEnd::Whole) {
                Add(Alarm, EndText(run));
            }
        }
        for (const SMissedRelay& relay : site.missed) {
            Add(Alarm, relay.text);
        }
        for (const SMissedRelay& relay : site.muted) {
            Add(Text, relay.text);
        }
        const std::string recover = "\"ruvoctl recover " + site.ini + "\"";
        AddCount(site.lost, "lost: the error log says which and why.");
        AddCount(site.setAside, "set aside: " + recover + " lists and stores them.");
        AddCount(site.waiting, "waiting in the journal: the next visit stores them.");
        if (site.recovered > 0) {
            Add(Text, Counted(site.recovered, "event") + " of earlier runs recovered.");
        }
    }
    void AddCount(std::uint64_t events, const std::string& fate) {
        if (events > 0) {
            Add(Alarm, Counted(events, "event") + " " + fate);
        }
    }

    void AddBay(const SDigestBay& bay) {
        Add(Bay, BayName(bay));
        if (bay.damaged > 0) {
            Add(Alarm, Counted(bay.damaged, "damaged place") + " in what came in.");
            Add(Todo, "\"ruvoctl events\" shows where; docs/reliability.md says what can cause damage.");
        }
        const std::size_t shown = std::min(bay.events.size(), m_mostEvents);
        for (std::size_t at = 0; at < shown; ++at) {
            m_lines.push_back({Event, {}, bay.events[at]});
            if (!bay.events[at].details.empty()) {
                Add(Detail, bay.events[at].details);
            }
        }
        if (shown < bay.Grave()) {
            Add(Text, "and " + std::to_string(bay.Grave() - shown) + " further trips and faults");
        }
        if (const std::string others = OtherKinds(bay); !others.empty()) {
            Add(Text, "also " + others);
        }
    }

    /// What means the same of several relays is said once.
    void AddProblems(const std::vector<SDigestProblem>& problems) {
        std::vector<const SDigestProblem*> firsts;
        for (const SDigestProblem& problem : problems) {
            const auto isSame = [&problem](const SDigestProblem* first) {
                return first->happened == problem.happened && first->todo == problem.todo;
            };
            if (std::ranges::none_of(firsts, isSame)) {
                firsts.push_back(&problem);
                AddProblem(problem, problems);
            }
        }
    }
    void AddProblem(const SDigestProblem& problem, const std::vector<SDigestProblem>& problems) {
        std::string text;
        std::uint64_t count = 0;
        for (const SDigestProblem& other : problems) {
            if (other.happened == problem.happened && other.todo == problem.todo) {
                Join(text, other.where);
                count += other.count;
            }
        }
        Join(text, problem.happened, ": ");
        text += count > 1 ? " (" + std::to_string(count) + " times)" : "";
        Add(problem.severity == ESeverity::Notice ? Text : Alarm, text);
        if (!problem.todo.empty() && problem.severity != ESeverity::Notice) {
            Add(Todo, problem.todo);
        }
    }

    void AddQuietSites(const std::vector<const SSiteDigest*>& sites) {
        constexpr std::size_t kMostNamed = 20;
        std::string names;
        std::size_t count = 0;
        for (const SSiteDigest* const site : sites) {
            if (sites.size() > 1 && site->Rank() == kQuiet) {
                Join(names, ++count <= kMostNamed ? site->name : std::string());
            }
        }
        if (count > 0) {
            Add(Site,
                "Visited, and nothing came in: " + names +
                    (count > kMostNamed ? " and " + std::to_string(count - kMostNamed) + " further sites"
                                        : std::string()));
        }
    }

    const SDigest& m_digest;
    std::size_t m_mostEvents;
    std::vector<SDigestLine> m_lines;
};

} // namespace

std::string HeadlineOf(const SDigest& digest) {
    std::uint64_t trips = 0, faults = 0, total = 0, lost = 0, damaged = 0;
    std::size_t missed = 0, unvisited = 0, unknown = digest.failures.size();
    for (const SSiteDigest& site : digest.sites) {
        trips += CountOf(site, EEventKind::Trip);
        faults += CountOf(site, EEventKind::Fault);
        total += site.Total();
        lost += site.lost;
        damaged += site.Damaged();
        missed += site.missed.size();
        unvisited += site.lacksVisit ? 1 : 0;
        unknown += site.failures.size();
    }
    std::string trouble;
    Join(trouble, lost > 0 ? Counted(lost, "event") + " lost" : "");
    Join(trouble, CountedAny(damaged, "damaged place"));
    Join(trouble, unvisited > 0 ? Counted(unvisited, "site") + " not visited" : "");
    Join(trouble, missed > 0 ? Counted(missed, "relay") + " not reached" : "");
    Join(trouble, unknown > 0 ? "not all could be read" : "");
    std::string text =
        digest.sites.size() == 1 ? digest.sites.front().name : Counted(digest.sites.size(), "site");
    return text + ": " + CountsText(trips, faults, total) + (trouble.empty() ? "" : "; " + trouble);
}

std::vector<SDigestLine> DigestLines(const SDigest& digest, std::size_t mostEvents) {
    return CLineMaker(digest, mostEvents).Make();
}

} // namespace ruvo
